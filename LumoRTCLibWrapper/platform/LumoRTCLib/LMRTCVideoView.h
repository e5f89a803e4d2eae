#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "LumoRTCLibWrapper/platform/system/UIView.h"

/// The SDK's video view: draws the frames of the stream that it is bound to. Its view operations and the two
/// setters belong to the main thread, its renderer operations to the stream's render thread.
class LMRTCVideoView : public UIView, public LMRTCVideoRenderer {
 public:
  using UIView::UIView;

  /// A new video view of the installed provider; null when no provider is installed.
  static std::shared_ptr<LMRTCVideoView> create(const UIRect& frame);

  /// @param mode  LMRTCVideoFillMode
  virtual void setFillMode(std::int64_t mode) = 0;

  /// Mirrors what is shown, left to right; what is sent stays as it is.
  virtual void setIsPreviewMirror(bool mirror) = 0;
};
