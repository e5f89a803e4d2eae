#pragma once

struct LMRTCVideoFrame;

/// Where a stream's pictures go: the SDK's own video view, or a surface of the host.
class LMRTCVideoRenderer {
 public:
  virtual ~LMRTCVideoRenderer() = default;

  /// Called before the first frame and whenever the size of the upright picture changes, on the stream's
  /// render thread.
  /// @param width,height  pixels, after the frame's rotation
  virtual void setSize(double width, double height) = 0;

  /// Called once per frame, on the stream's render thread. The frame is lent for the duration of the call; a
  /// renderer that wants its pixels longer keeps the shared pointers inside.
  virtual void renderFrame(const LMRTCVideoFrame& frame) = 0;
};
