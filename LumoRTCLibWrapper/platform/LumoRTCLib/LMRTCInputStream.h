#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioData.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStream.h"

class LMRTCVideoInputStreamDelegate;
class LMRTCVideoRenderer;

/// A stream that the local user can receive.
class LMRTCInputStream : public LMRTCStream {
 public:
  /// LMRTCResourceState: whether the stream is switched on at its source.
  virtual std::int64_t resourceState() const = 0;

  /// Hands on the received sound, block by block, before it is mixed; empty ends it. Streams without sound
  /// ignore it. A block that is being delivered on the audio thread may still reach an earlier callback.
  virtual void setAudioDataCallback(LMRTCAudioDataCallback callback) = 0;
};

/// A microphone stream.
class LMRTCAudioInputStream : public LMRTCInputStream {};

/// A camera stream, the picture of the live mix, or a custom stream, of sound too.
class LMRTCVideoInputStream : public LMRTCInputStream {
 public:
  /// Who sees the decoded pictures; held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCVideoInputStreamDelegate> delegate) = 0;

  /// Shows the stream in `view` from now on, in place of any earlier one; null shows it nowhere. The stream
  /// holds the view weakly. A frame that is being rendered on the render thread may still reach the earlier
  /// view.
  virtual void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) = 0;
};

/// The inner CDN stream of a live room: the live mix, distributed inside the media cloud.
class LMRTCCDNInputStream : public LMRTCInputStream {
 public:
  using Completion = std::function<void(bool success, std::int64_t code)>;

  /// Sets the stream's size and frame rate, for whoever receives it.
  /// @param preset    size preset, 0 (144 x 176) to 16 (1080 x 1920); -1 leaves the size as it is
  /// @param fpsValue  0 to 3 for 10, 15, 24 and 30 frames per second; -1 leaves the frame rate as it is
  virtual void setVideoConfig(std::int64_t preset, std::int64_t fpsValue, Completion completion) = 0;

  /// As LMRTCVideoInputStream::setVideoView.
  virtual void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) = 0;
};
