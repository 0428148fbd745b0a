// The ledger counts the references that the layer has handed to the probe and has
// not been given back. What each refers to is with its source: objects.cpp,
// registry_handles.cpp, smart_user_client.cpp and toolbox.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <utility>

namespace platform {

enum class ReferenceKind {
  kMatchingDictionary,
  kPropertyDictionary,
  kIterator,
  kService,
  kPlugIn,
  kSMARTInterface,
  kFoundValue,  // of a registry search
  kString,      // made of data, or looked up in a bundle
  kMemoryBlock,
  kCount  // of the kinds above; no kind itself
};

// How many references of each kind. A kind that is not named in the list has none.
class Ledger {
 public:
  Ledger() = default;
  Ledger(std::initializer_list<std::pair<ReferenceKind, int>> counts) {
    for (const auto& [kind, count] : counts) (*this)[kind] = count;
  }

  int& operator[](ReferenceKind kind) { return counts_.at(static_cast<std::size_t>(kind)); }
  bool operator==(const Ledger&) const = default;

 private:
  std::array<int, static_cast<std::size_t>(ReferenceKind::kCount)> counts_{};
};

// The references that are out now.
inline Ledger& OpenReferences() {
  static Ledger ledger;
  return ledger;
}

}  // namespace platform
