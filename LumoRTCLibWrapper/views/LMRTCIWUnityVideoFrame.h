#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

/// One frame for a Unity host: I420 planes, not turned. In a queued frame the rows are tight: strideY equals
/// width, and the chroma planes are (width + 1) / 2 wide and (height + 1) / 2 high.
struct LMRTCIWUnityVideoFrame {
  std::int32_t width = 0;                              ///< pixels
  std::int32_t height = 0;                             ///< pixels
  std::int32_t rotation = 0;                           ///< degrees clockwise that turn the picture upright
  std::shared_ptr<const LumoRTCI420Buffer> yuvBuffer;  ///< the pixels; null after `clear`

  /// Plane addresses, valid while the frame keeps its pixels; null after `clear`.
  const std::uint8_t* dataY() const { return yuvBuffer ? yuvBuffer->dataY() : nullptr; }
  const std::uint8_t* dataU() const { return yuvBuffer ? yuvBuffer->dataU() : nullptr; }
  const std::uint8_t* dataV() const { return yuvBuffer ? yuvBuffer->dataV() : nullptr; }
  /// Bytes from row to row; 0 after `clear`.
  std::int32_t strideY() const { return yuvBuffer ? yuvBuffer->strideY() : 0; }
  std::int32_t strideU() const { return yuvBuffer ? yuvBuffer->strideU() : 0; }
  std::int32_t strideV() const { return yuvBuffer ? yuvBuffer->strideV() : 0; }

  /// Gives the pixels back before the frame itself goes.
  void clear() { yuvBuffer = nullptr; }
};
