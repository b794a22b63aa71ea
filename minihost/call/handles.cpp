#include "minihost/call/handles.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace minihost {

// A handle is the address of `bytes`, so that dereferencing it always finds the block where it is now.
struct HandleTable::Block {
  void* bytes = nullptr;
  std::size_t size = 0;
  int locks = 0;

  ~Block() { std::free(bytes); }
};

HandleTable::HandleTable() = default;
HandleTable::~HandleTable() = default;

PF_Handle HandleTable::New(std::uint64_t size) noexcept {
  if (!std::in_range<std::size_t>(size)) {
    return nullptr;
  }
  try {
    auto block = std::make_unique<Block>();
    block->size = std::max<std::size_t>(static_cast<std::size_t>(size), 1);
    block->bytes = std::malloc(block->size);
    if (block->bytes == nullptr) {
      return nullptr;
    }
    blocks_.push_back(std::move(block));
    return &blocks_.back()->bytes;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

HandleTable::Block* HandleTable::Find(PF_Handle handle) const noexcept {
  for (const auto& block : blocks_) {
    if (&block->bytes == handle) {
      return block.get();
    }
  }
  return nullptr;
}

bool HandleTable::Dispose(PF_Handle handle) noexcept {
  return std::erase_if(blocks_, [handle](const auto& block) { return &block->bytes == handle; }) != 0;
}

void* HandleTable::Lock(PF_Handle handle) noexcept {
  Block* block = Find(handle);
  if (block == nullptr) {
    return nullptr;
  }
  ++block->locks;
  return block->bytes;
}

bool HandleTable::Unlock(PF_Handle handle) noexcept {
  Block* block = Find(handle);
  if (block == nullptr || block->locks == 0) {
    return false;
  }
  --block->locks;
  return true;
}

void HandleTable::MoveUnlocked() noexcept {
  for (const auto& block : blocks_) {
    if (block->locks != 0) {
      continue;
    }
    void* moved = std::malloc(block->size);
    if (moved == nullptr) {
      continue;
    }
    std::memcpy(moved, block->bytes, block->size);
    std::free(block->bytes);
    block->bytes = moved;
  }
}

}  // namespace minihost
