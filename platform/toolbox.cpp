// Toolbox calls: the system version, memory blocks and length-prefixed text.
#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <unordered_set>

#include "platform/ledger.h"
#include "platform/machine.h"

namespace {

constexpr OSType kSystemVersionSelector = 0x73797376;  // 'sysv'
constexpr OSErr kUnknownSelector = -5551;
constexpr int kUnclearedByte = 0xA5;
constexpr std::size_t kMaxPascalText = 255;

// Never destroyed, so that what the probe does not dispose of is no leak.
std::unordered_set<Ptr>& MemoryBlocks() {
  static auto& blocks = *new std::unordered_set<Ptr>;
  return blocks;
}

}  // namespace

OSErr Gestalt(OSType selector, SInt32* response) {
  if (selector != kSystemVersionSelector) return kUnknownSelector;
  *response = platform::ThisMachine().systemVersion;
  return 0;
}

// Does nothing: the probe starts an instance but never uses it.
OSStatus ICStart(ICInstance* /*instance*/, OSType /*signature*/) { return 0; }

Ptr NewPtr(Size byteCount) {
  if (byteCount < 0) return nullptr;
  const auto size = static_cast<std::size_t>(byteCount);
  auto* const block = static_cast<Ptr>(std::malloc(size));
  if (block == nullptr) return nullptr;
  std::memset(block, kUnclearedByte, size);
  MemoryBlocks().insert(block);
  return block;
}

void DisposePtr(Ptr pointer) {
  if (MemoryBlocks().erase(pointer) == 0) {
    platform::Misuse("DisposePtr", "the block is null or disposed of already");
  }
  std::free(pointer);
}

void BlockZero(void* destination, Size byteCount) {
  std::memset(destination, 0, static_cast<std::size_t>(byteCount));
}

void CopyCStringToPascal(const char* source, Str255 destination) {
  const std::size_t length = std::min(std::strlen(source), kMaxPascalText);
  // The two may be one buffer. NOLINTNEXTLINE(bugprone-not-null-terminated-result)
  std::memmove(destination + 1, source, length);
  destination[0] = static_cast<unsigned char>(length);
}

void platform::CountMemoryBlocks(Ledger& ledger) {
  for ([[maybe_unused]] Ptr block : MemoryBlocks()) ledger[ReferenceKind::kMemoryBlock] += 1;
}

void platform::DropMemoryBlocks() {
  for (Ptr block : MemoryBlocks()) std::free(block);
  MemoryBlocks().clear();
}
