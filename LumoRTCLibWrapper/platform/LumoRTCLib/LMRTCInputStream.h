#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStream.h"

class LMRTCVideoRenderer;

/// A stream that the local user can receive.
class LMRTCInputStream : public LMRTCStream {
 public:
  /// LMRTCResourceState: whether the stream is switched on at its source.
  virtual std::int64_t resourceState() const = 0;
};

class LMRTCAudioInputStream : public LMRTCInputStream {};

class LMRTCVideoInputStream : public LMRTCInputStream {
 public:
  /// Shows the stream in `view` from now on, in place of any earlier one; null shows it nowhere. The stream
  /// holds the view weakly. A frame that is being rendered on the render thread may still reach the earlier
  /// view.
  virtual void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) = 0;
};

/// The inner CDN stream of a live room: the live mix, distributed inside the media cloud.
class LMRTCCDNInputStream : public LMRTCInputStream {
 public:
  /// As LMRTCVideoInputStream::setVideoView.
  virtual void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) = 0;
};
