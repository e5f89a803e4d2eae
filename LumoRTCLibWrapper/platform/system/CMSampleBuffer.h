#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/system/CVPixelBuffer.h"

/// The system's sample buffer, for video: one picture and when it was captured.
struct CMSampleBuffer {
  CVPixelBufferRef imageBuffer;
  std::int64_t presentationTimeMs = 0;  ///< on the SDK's monotonic clock, milliseconds
};

using CMSampleBufferRef = std::shared_ptr<CMSampleBuffer>;
