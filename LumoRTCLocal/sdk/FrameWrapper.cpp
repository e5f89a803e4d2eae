#include "LumoRTCLocal/sdk/FrameWrapper.h"

#include <chrono>
#include <cstddef>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace lumo {
namespace {

class I420FrameBuffer : public LumoRTCVideoFrameBuffer {
 public:
  explicit I420FrameBuffer(std::shared_ptr<const LumoRTCI420Buffer> picture) : picture_(std::move(picture)) {}

  std::shared_ptr<const LumoRTCI420Buffer> toI420() override { return picture_; }

 private:
  const std::shared_ptr<const LumoRTCI420Buffer> picture_;
};

/// Big enough for either object with its reference counts; the allocator checks it.
constexpr std::size_t kBlockSize = 96;

}  // namespace

/// Free blocks of one size.
struct FrameWrapper::Recycler {
  ~Recycler() {
    for (void* const block : free) ::operator delete(block);
  }

  void* take() {
    {
      const std::lock_guard lock(mutex);
      if (!free.empty()) {
        void* const block = free.back();
        free.pop_back();
        return block;
      }
    }
    return ::operator new(kBlockSize);
  }

  void giveBack(void* block) {
    const std::lock_guard lock(mutex);
    free.push_back(block);
  }

  std::mutex mutex;
  std::vector<void*> free;
};

template <typename T>
struct FrameWrapper::Allocator {
  using value_type = T;

  explicit Allocator(std::shared_ptr<Recycler> owner) : recycler(std::move(owner)) {}
  template <typename U>
  Allocator(const Allocator<U>& other) : recycler(other.recycler) {}

  T* allocate(std::size_t) {
    static_assert(sizeof(T) <= kBlockSize && alignof(T) <= alignof(std::max_align_t));
    return static_cast<T*>(recycler->take());
  }
  void deallocate(T* block, std::size_t) { recycler->giveBack(block); }

  template <typename U>
  bool operator==(const Allocator<U>& other) const {
    return recycler == other.recycler;
  }

  std::shared_ptr<Recycler> recycler;
};

FrameWrapper::FrameWrapper() : recycler_(std::make_shared<Recycler>()) {}

LMRTCVideoFrame FrameWrapper::wrap(std::shared_ptr<const LumoRTCI420Buffer> picture,
                                   Microseconds time) const {
  LMRTCVideoFrame frame;
  frame.width = picture->width();
  frame.height = picture->height();
  frame.timestampMs = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  auto buffer =
      std::allocate_shared<I420FrameBuffer>(Allocator<I420FrameBuffer>(recycler_), std::move(picture));
  frame.rtcVideoFrame = std::allocate_shared<LumoRTCVideoFrame>(Allocator<LumoRTCVideoFrame>(recycler_),
                                                                LumoRTCVideoFrame{std::move(buffer)});
  return frame;
}

}  // namespace lumo
