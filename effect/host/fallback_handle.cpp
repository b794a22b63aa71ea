#include "effect/host/fallback_handle.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace {

// The handle is the address of the pointer, so it is the block's own address too.
struct Block {
  void* memory;
  alignas(std::max_align_t) std::byte bytes[1];
};

}  // namespace

PF_Handle NewHandle(std::uint32_t size) {
  void* const storage = ::operator new (sizeof(Block) + std::size_t{size}, std::nothrow);
  if (storage == nullptr) {
    return nullptr;
  }
  Block* const block = new (storage) Block;
  block->memory = block->bytes;
  return &block->memory;
}

void DisposeHandle(PF_Handle handle) {
  ::operator delete(static_cast<void*>(handle));
}
