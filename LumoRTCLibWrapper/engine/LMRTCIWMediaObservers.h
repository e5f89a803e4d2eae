#pragma once

#include <functional>

#include "LumoRTCLibWrapper/model/LMRTCIWAudioFrame.h"
#include "LumoRTCLibWrapper/platform/system/CMSampleBuffer.h"
#include "LumoRTCLibWrapper/platform/system/CVPixelBuffer.h"

// Observers of raw media. They are called on the SDK's media threads at media rate: be quick. A field left
// empty is never called. Fill an observer before installing it and replace it as a whole.

/// Watches sound.
struct LMRTCIWAudioFrameDelegate {
  /// The samples are lent for the duration of the call.
  std::function<void(const LMRTCIWAudioFrame& frame)> onAudioFrame;
};

/// Watches, and may replace, what the local user sends as video.
struct LMRTCIWSampleBufferVideoFrameDelegate {
  /// @return the buffer to send: the given one, or another of the same size; null sends nothing
  std::function<CMSampleBufferRef(const CMSampleBufferRef& buffer)> onSampleBuffer;
};

/// Watches the decoded video of a remote user.
struct LMRTCIWPixelBufferVideoFrameDelegate {
  /// The pixels must not be written; keep the reference to use them after the call.
  std::function<void(const CVPixelBufferRef& buffer)> onPixelBuffer;
};
