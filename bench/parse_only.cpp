// What a program costs that only reads and parses a recording with libplist.
#include <plist/plist.h>

#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  plist_t root = nullptr;
  plist_from_xml(text.data(), static_cast<uint32_t>(text.size()), &root);
  if (root == nullptr) return 1;
  plist_free(root);
  return 0;
}
