#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/util/LMIWRecycler.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// Makes the SDK's frames around pictures, without a copy. The memory of frames that everybody has let go of
/// is used again, so that a steady flow allocates nothing. Frames may outlive the wrapper. Any thread.
class FrameWrapper {
 public:
  /// @param picture   not null
  /// @param time      when it was captured, on the timeline
  /// @param rotation  degrees clockwise that turn it upright: 0, 90, 180 or 270
  LMRTCVideoFrame wrap(std::shared_ptr<const LumoRTCI420Buffer> picture, Microseconds time,
                       std::int32_t rotation = 0) const;

 private:
  std::shared_ptr<Recycler> recycler_ = std::make_shared<Recycler>();
};

}  // namespace lumo
