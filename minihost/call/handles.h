// The relocatable blocks of one instance.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "hostapi/types.h"

namespace minihost {

/// Owns every block until it is disposed of; what the effect forgets is freed with the table.
class HandleTable {
 public:
  HandleTable();
  HandleTable(const HandleTable&) = delete;
  HandleTable& operator=(const HandleTable&) = delete;
  ~HandleTable();

  /// Contents undefined, aligned for every type.  Null without memory.
  PF_Handle New(std::uint64_t size) noexcept;

  /// Frees a block, locked or not.  False for what is not a live block of this table.
  bool Dispose(PF_Handle handle) noexcept;

  bool Contains(PF_Handle handle) const noexcept { return Find(handle) != nullptr; }

  /// The first byte, fixed in place until the block is unlocked or disposed of; null for an unknown handle.
  void* Lock(PF_Handle handle) noexcept;

  /// False for an unknown or unlocked handle.
  bool Unlock(PF_Handle handle) noexcept;

  /// Gives every unlocked block a new place, as a host is free to do between commands.  An effect that kept
  /// an address is found out at once instead of on a bad day.
  void MoveUnlocked() noexcept;

 private:
  struct Block;
  Block* Find(PF_Handle handle) const noexcept;

  std::vector<std::unique_ptr<Block>> blocks_;  // few at a time
};

}  // namespace minihost
