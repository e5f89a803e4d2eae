#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLocal/media/ViewPainter.h"

namespace lumo {

/// The video view of LumoRTCLocal: keeps the newest frame and paints it when asked to. What concerns frames
/// may be called on any thread; what concerns the view, and `snapshot`, which reads its size, on the main
/// thread.
class LocalVideoView : public LMRTCVideoView {
 public:
  using LMRTCVideoView::LMRTCVideoView;

  /// What the view shows at its present size, in pixels: black before the first frame, empty for an empty
  /// view.
  Bitmap snapshot() const;

  /// The frames that have come so far.
  std::uint64_t frameCount() const;
  /// The newest picture as it came, before rotation, mirror and fill mode; null before the first frame.
  std::shared_ptr<const LumoRTCI420Buffer> picture() const;
  /// The capture time of the newest picture, in milliseconds; 0 before the first frame.
  std::int64_t timestampMs() const;

  void setFillMode(std::int64_t mode) override;
  void setIsPreviewMirror(bool mirror) override;
  /// Does nothing: each frame says how large it is.
  void setSize(double width, double height) override;
  void renderFrame(const LMRTCVideoFrame& frame) override;

 private:
  struct Content {
    std::shared_ptr<const LumoRTCI420Buffer> picture;
    std::int32_t rotation = 0;
    std::int64_t timestampMs = 0;
    std::int64_t fillMode = LMRTCVideoFillModeStretch;
    bool mirror = false;
    std::uint64_t frames = 0;
  };

  Content content() const;

  mutable std::mutex mutex_;  ///< guards the content
  Content content_;
};

}  // namespace lumo
