// Builds a property list from its elements. It knows nothing of XML. Its errors name no line,
// because only the caller knows the line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace machines {

// Makes values of elements with a stack of the open containers, so that no function here calls
// itself, however deep a file is nested.
class ElementStack {
 public:
  // Call these with the tags and texts of a well-formed file, in its order. A text may come in
  // pieces. Each throws RecordingError for an element or text that may not stand there. Call none
  // of them after that.
  void Start(std::string_view name);
  void Text(std::string_view piece);
  void End();

  // The innermost open element. Empty if there is none.
  std::string_view Innermost() const {
    return leaf_.empty() && !open_.empty() ? open_.back().name : leaf_;
  }

  // The value of the whole list, after the end of its outermost element.
  platform::Property& Root() { return root_; }

 private:
  // An open container. The outermost is <plist>, which holds its values like an array.
  struct Container {
    std::string_view name;
    platform::Property value;
    platform::Property* due = nullptr;  // of a dictionary: the missing value of the last key
  };

  void CheckPlace(std::string_view name) const;
  void EndLeaf();
  void AddKey(Container& dictionary);
  void Put(platform::Property value);

  std::vector<Container> open_;
  std::string_view leaf_;  // the name of the open leaf; empty: none
  std::string text_;       // the text of that leaf so far
  std::size_t count_ = 0;
  platform::Property root_;
};

}  // namespace machines
