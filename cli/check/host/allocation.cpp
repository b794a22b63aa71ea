#include "cli/check/host/allocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace cli::check {
namespace {

constinit thread_local AllocationWatch watch;

bool IsRefused() noexcept {
  const std::uint64_t call = ++watch.count;
  const bool refused = call >= watch.refuseFirst && call <= watch.refuseLast && watch.refuseFirst != 0;
  watch.refused += refused ? 1 : 0;
  return refused;
}

void* Allocate(std::size_t size) noexcept {
  if (watch.isCounting && IsRefused()) [[unlikely]] {
    return nullptr;
  }
  return std::malloc(size == 0 ? 1 : size);
}

void* Allocate(std::size_t size, std::align_val_t alignment) noexcept {
  if (watch.isCounting && IsRefused()) [[unlikely]] {
    return nullptr;
  }
  const auto unit = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(unit, (size + unit - 1) / unit * unit);
}

template <class... Alignment>
void* AllocateOrThrow(std::size_t size, Alignment... alignment) {
  for (;;) {
    if (void* const memory = Allocate(size, alignment...)) {
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    handler();
  }
}

}  // namespace

AllocationWatch& Allocations() noexcept {
  return watch;
}

}  // namespace cli::check

using cli::check::AllocateOrThrow;

// All of them: a sanitizer would otherwise put its own in the place of those left out.
void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return cli::check::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return cli::check::Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return cli::check::Allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return cli::check::Allocate(size, alignment);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
