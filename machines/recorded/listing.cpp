#include "machines/recorded/listing.h"

#include <string>
#include <utility>

#include "machines/recorded/keys.h"

namespace machines {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Entry;

void PutText(Dictionary& listed, std::string_view key, const std::string& text) {
  if (!text.empty()) listed.push_back({std::string(key), {text}});
}

Dictionary ListEntry(const Entry& entry, const DriveRecorder& record) {
  Dictionary listed;
  PutText(listed, kNameKey, entry.name);
  PutText(listed, kClassKey, entry.className);
  listed.insert(listed.end(), entry.properties.begin(), entry.properties.end());
  if (entry.drive) listed.push_back({std::string(kDriveKey), {record(entry)}});
  if (entry.children.empty()) return listed;
  Array children;
  for (const Entry& child : entry.children) children.push_back({ListEntry(child, record)});
  listed.push_back({std::string(kChildrenKey), {std::move(children)}});
  return listed;
}

// 0x1068 is 10.6.8.
std::string ProductVersion(SInt32 systemVersion) {
  const auto digit = [systemVersion](int shift) { return (systemVersion >> shift) & 0xF; };
  return std::to_string(digit(12) * 10 + digit(8)) + "." + std::to_string(digit(4)) + "." +
         std::to_string(digit(0));
}

}  // namespace

platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record) {
  Array roots;
  for (const Entry& root : machine.roots) roots.push_back({ListEntry(root, record)});
  if (roots.empty()) roots.push_back({Dictionary()});
  auto& first = std::get<Dictionary>(roots.front().value);
  first.insert(first.begin(), {std::string(kVersionKey), {ProductVersion(machine.systemVersion)}});
  if (roots.size() == 1) return std::move(roots.front());
  return {std::move(roots)};
}

}  // namespace machines
