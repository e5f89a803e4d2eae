#include "tests/support/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

// The operators stand in a file of their own, where the compiler cannot pair an inlined one with its
// counterpart.

namespace {

constexpr std::size_t kLarge = 64 * 1024;

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> largeAllocations{0};
std::atomic<std::size_t> releases{0};

void* counted(void* memory, std::size_t size) {
  if (!memory) throw std::bad_alloc();
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (size >= kLarge) largeAllocations.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

void* counted(std::size_t size) { return counted(std::malloc(size), size); }

void* counted(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  return counted(std::aligned_alloc(unit, (size + unit - 1) / unit * unit), size);
}

void release(void* memory) {
  if (memory) releases.fetch_add(1, std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return counted(size); }
void* operator new[](std::size_t size) { return counted(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return counted(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return counted(size, alignment); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return counted(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return counted(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }

std::size_t allocationCount() { return allocations; }

std::size_t liveAllocationCount() { return allocations - releases; }

std::size_t largeAllocationCount() { return largeAllocations; }
