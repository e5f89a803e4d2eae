#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// Makes the SDK's frames around pictures, without a copy. The memory of frames that everybody has let go of
/// is used again, so that a steady flow allocates nothing. Frames may outlive the wrapper. Any thread.
class FrameWrapper {
 public:
  FrameWrapper();

  /// @param picture  not null
  /// @param time     when it was captured, on the timeline
  LMRTCVideoFrame wrap(std::shared_ptr<const LumoRTCI420Buffer> picture, Microseconds time) const;

 private:
  struct Recycler;
  template <typename T>
  struct Allocator;

  std::shared_ptr<Recycler> recycler_;
};

}  // namespace lumo
