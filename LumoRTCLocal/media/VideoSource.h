#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/media/VideoFormat.h"

namespace lumo {

/// Where the pictures of a video stream come from. Asked by one thread at a time.
class VideoSource {
 public:
  virtual ~VideoSource() = default;

  /// The picture to show at `time`.
  /// @param time    since the capture started
  /// @param format  the picture is exactly `width` x `height`
  /// @return null when there is no picture yet; the same buffer as before when the picture is still the same
  virtual std::shared_ptr<const LumoRTCI420Buffer> frameAt(Microseconds time, const VideoFormat& format) = 0;
};

}  // namespace lumo
