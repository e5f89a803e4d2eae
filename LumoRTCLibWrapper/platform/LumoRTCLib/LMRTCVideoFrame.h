#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

/// The pixels of a frame, in whatever form the SDK decoded them.
class LumoRTCVideoFrameBuffer {
 public:
  virtual ~LumoRTCVideoFrameBuffer() = default;

  /// The pixels as I420, without a copy where they are I420 already. May be called on any thread.
  virtual std::shared_ptr<const LumoRTCI420Buffer> toI420() = 0;
};

/// The SDK's underlying frame.
struct LumoRTCVideoFrame {
  std::shared_ptr<LumoRTCVideoFrameBuffer> buffer;
};

/// One frame on its way to a renderer; valid for as long as somebody holds what it points to.
struct LMRTCVideoFrame {
  std::shared_ptr<LumoRTCVideoFrame> rtcVideoFrame;  ///< null: a frame without pixels, to be ignored
  std::int32_t width = 0;                            ///< pixels, before the rotation
  std::int32_t height = 0;                           ///< pixels, before the rotation
  std::int32_t rotation = 0;     ///< degrees clockwise to turn the picture upright: 0, 90, 180 or 270
  std::int64_t timestampMs = 0;  ///< capture time on the SDK's monotonic clock, milliseconds
};
