#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

namespace lumo {

/// Recycles the memory of pictures, so that a steady flow of frames allocates nothing. A buffer comes back
/// when its last holder lets go, and it outlives the pool where somebody still holds it. The pool keeps a
/// handful of buffers that nobody uses and drops the oldest beyond that. Every operation may be called on any
/// thread.
class FramePool {
 public:
  FramePool();
  ~FramePool();
  FramePool(const FramePool&) = delete;
  FramePool& operator=(const FramePool&) = delete;

  /// A buffer with tight rows and undefined contents, for the caller to write.
  /// @param width,height  pixels, at least 1
  std::shared_ptr<LumoRTCI420Buffer> take(std::int32_t width, std::int32_t height);

 private:
  struct Slot;
  struct State;
  template <typename T>
  struct SlotAllocator;

  std::shared_ptr<State> state_;
};

}  // namespace lumo
