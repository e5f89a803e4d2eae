#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLibWrapper/platform/system/CVPixelBuffer.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/views/FrameSurface.h"
#include "LumoRTCLibWrapper/views/UprightConverter.h"

/// Hears of a Flutter texture's frames, always on the main queue. Every field is optional.
struct LMRTCIWFlutterViewDelegate {
  /// The size of the frames has changed.
  /// @param width,height  pixels as the SDK reports them, before the frame is turned upright
  std::function<void(std::int32_t width, std::int32_t height)> changeSize;
  /// A frame is in the pixel buffer.
  std::function<void()> frameRendered;
  /// The same, for the first frame of the view and the first one after `resize`; follows `frameRendered`.
  std::function<void()> firstFrameRendered;
};

/// The Flutter surface: an external texture. The SDK renders into it; each frame is turned upright, converted
/// to BGRA into one shared pixel buffer and announced on the main queue. The host may read the buffer while
/// the next frame is being written into it. It holds its streams weakly.
class LMRTCIWFlutterView : public lumo::FrameSurface<std::weak_ptr>,
                           public std::enable_shared_from_this<LMRTCIWFlutterView> {
  struct PrivateKey {};

 public:
  static std::shared_ptr<LMRTCIWFlutterView> create();
  explicit LMRTCIWFlutterView(PrivateKey) {}

  /// LMRTCIWViewTypeFlutter
  std::int64_t getViewType() const override;

  /// Starts the size handshake again: the next frame announces its size and counts as a first frame. The
  /// pixel buffer stays until the next `setSize`.
  void resize();

  /// The host's listener; weak.
  std::shared_ptr<LMRTCIWFlutterViewDelegate> textureViewDelegate() const {
    return textureViewDelegate_.get();
  }
  void setTextureViewDelegate(const std::shared_ptr<LMRTCIWFlutterViewDelegate>& delegate) {
    textureViewDelegate_.set(delegate);
  }

  /// The shared 32-bit BGRA buffer; null until the SDK has told the size. Stays readable for as long as it is
  /// held.
  CVPixelBufferRef pixelBufferRef() const;

  bool isFirstFrameRendered() const { return isFirstFrameRendered_; }
  /// Replaces the pixel buffer unless it has this size already. Render thread.
  void setSize(double width, double height) override;

  /// Shows one frame. A frame without pixels, or one that does not fit the pixel buffer, is skipped. Render
  /// thread.
  void renderFrame(const LMRTCVideoFrame& frame) override;

  /// A copy of `picture`, turned clockwise by 90, 180 or 270 degrees; any other number leaves it as it is.
  static std::shared_ptr<LumoRTCI420Buffer> correctRotation(const LumoRTCI420Buffer& picture,
                                                            std::int32_t rotation);

 private:
  std::shared_ptr<LMRTCVideoRenderer> renderer() override { return shared_from_this(); }
  struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
  };
  class FrameNotice;

  bool convert(const LumoRTCI420Buffer& picture, std::int32_t rotation);
  void announce(std::int32_t width, std::int32_t height);
  void announceOnMainQueue();

  lumo::WeakCell<LMRTCIWFlutterViewDelegate> textureViewDelegate_;

  mutable std::mutex mutex_;  ///< guards the three below; not held while a frame is converted
  CVPixelBufferRef pixelBufferRef_;
  Size bufferSize_;
  Size lastFrameSize_;

  std::atomic<bool> isFirstFrameRendered_ = false;
  lumo::UprightConverter converter_;                    ///< render thread only
  std::shared_ptr<lumo::MainQueue::Work> frameNotice_;  ///< posted once per frame; set by `create`
};
