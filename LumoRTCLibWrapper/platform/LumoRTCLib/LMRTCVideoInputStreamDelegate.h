#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/system/CVPixelBuffer.h"

class LMRTCVideoInputStream;

/// Sees the decoded pictures of a remote video stream before they are rendered.
class LMRTCVideoInputStreamDelegate {
 public:
  virtual ~LMRTCVideoInputStreamDelegate() = default;

  /// Called once per picture, on the stream's media thread. The pixels must not be written.
  virtual void willRenderCVPixelBufferRef(const CVPixelBufferRef& pixelBuffer,
                                          const std::shared_ptr<LMRTCVideoInputStream>& stream) = 0;
};
