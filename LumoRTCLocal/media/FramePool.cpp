#include "LumoRTCLocal/media/FramePool.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

namespace lumo {
namespace {

constexpr std::size_t kKeptBuffers = 8;

}  // namespace

/// A buffer, and room for the control block of the shared pointer by which it is handed out.
struct FramePool::Slot {
  std::shared_ptr<LumoRTCI420Buffer> buffer;
  alignas(std::max_align_t) std::byte controlBlock[128];
};

struct FramePool::State {
  State() { unused.reserve(kKeptBuffers + 1); }

  std::unique_ptr<Slot> takeUnused(std::int32_t width, std::int32_t height) {
    const std::lock_guard lock(mutex);
    const auto found = std::find_if(unused.rbegin(), unused.rend(), [=](const std::unique_ptr<Slot>& slot) {
      return slot->buffer->width() == width && slot->buffer->height() == height;
    });
    if (found == unused.rend()) return nullptr;
    std::unique_ptr<Slot> slot = std::move(*found);
    unused.erase(std::next(found).base());
    return slot;
  }

  void putBack(std::unique_ptr<Slot> slot) {
    std::unique_ptr<Slot> oldest;  // destroyed after the lock is released
    const std::lock_guard lock(mutex);
    unused.push_back(std::move(slot));
    if (unused.size() <= kKeptBuffers) return;
    oldest = std::move(unused.front());
    unused.erase(unused.begin());
  }

  std::mutex mutex;
  std::vector<std::unique_ptr<Slot>> unused;  // guarded by mutex; the least recently used first
};

/// Places the control block into the slot. Its memory is given back when the last holder, weak ones included,
/// is gone: that is when the slot can be used again.
template <typename T>
struct FramePool::SlotAllocator {
  using value_type = T;

  SlotAllocator(Slot* handedOut, std::shared_ptr<State> owner) : slot(handedOut), state(std::move(owner)) {}
  template <typename U>
  SlotAllocator(const SlotAllocator<U>& other) : slot(other.slot), state(other.state) {}

  T* allocate(std::size_t) {
    static_assert(sizeof(T) <= sizeof(Slot::controlBlock) && alignof(T) <= alignof(std::max_align_t));
    return reinterpret_cast<T*>(slot->controlBlock);
  }
  void deallocate(T*, std::size_t) { state->putBack(std::unique_ptr<Slot>(slot)); }

  template <typename U>
  bool operator==(const SlotAllocator<U>& other) const {
    return slot == other.slot;
  }

  Slot* slot;
  std::shared_ptr<State> state;
};

FramePool::FramePool() : state_(std::make_shared<State>()) {}

FramePool::~FramePool() = default;

std::shared_ptr<LumoRTCI420Buffer> FramePool::take(std::int32_t width, std::int32_t height) {
  std::unique_ptr<Slot> slot = state_->takeUnused(width, height);
  if (!slot) {
    slot = std::make_unique<Slot>();
    slot->buffer = LumoRTCI420Buffer::create(width, height);
  }
  Slot* const handedOut = slot.release();
  return {handedOut->buffer.get(), [](LumoRTCI420Buffer*) {}, SlotAllocator<std::byte>(handedOut, state_)};
}

}  // namespace lumo
