// A property list as its elements build it, without a word on XML. Errors name no line:
// the caller knows where it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace machines {

// Elements become values on a stack of the containers that are open: nothing here calls
// itself, however deep a file is nested.
class ElementStack {
 public:
  // The tags and texts of a well-formed file, in its order; a text may come in pieces. Each
  // throws RecordingError for what may not stand there, and is not to be called again then.
  void Start(std::string_view name);
  void Text(std::string_view piece);
  void End();

  // The innermost element that is open. Empty: there is none.
  std::string_view Innermost() const {
    return leaf_.empty() && !open_.empty() ? open_.back().name : leaf_;
  }

  // The value of the whole list, after the end of its outermost element.
  platform::Property& Root() { return root_; }

 private:
  // The outermost is <plist>, which has its values as an array has.
  struct Container {
    std::string_view name;
    platform::Property value;
    platform::Property* due = nullptr;  // of a dictionary: what the last key waits for
  };

  void CheckPlace(std::string_view name) const;
  void EndLeaf();
  void AddKey(Container& dictionary);
  void Put(platform::Property value);

  std::vector<Container> open_;
  std::string_view leaf_;  // that is open; empty: none
  std::string text_;       // of that leaf so far
  std::size_t count_ = 0;
  platform::Property root_;
};

}  // namespace machines
