#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWViewDelegate.h"

class LMRTCVideoView;

/// The native surface: a platform view that embeds the SDK's video view while a stream is bound. Main thread
/// only. Unbind before binding again: a second bind leaves the first video view in the view tree.
class LMRTCIWView : public UIView, public LMRTCIWViewDelegate {
 public:
  /// A view at the origin, without size.
  static std::shared_ptr<LMRTCIWView> create();
  /// @param frame  place in the parent, and size, in points
  static std::shared_ptr<LMRTCIWView> create(const UIRect& frame);

  /// The SDK's fill mode (LMRTCVideoFillMode) of a host fit type: 0 gives 2 (aspect fit), 1 gives 1 (aspect
  /// fill), and every other number gives 0 (stretch).
  static std::int64_t toLMRTCVideoFillMode(std::int64_t fitType);

  explicit LMRTCIWView(const UIRect& frame);
  ~LMRTCIWView() override;

  /// LMRTCIWViewTypeNative
  std::int64_t getViewType() const override;

  void setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>& stream) override;
  void removeLocalView() override;
  void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>& stream) override;
  void removeRemoteView() override;
  void setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>& stream) override;
  void removeInnerCdnView() override;

  /// Mirrors the picture, left to right. Reaches only the video view that is embedded at the moment; one that
  /// is embedded later is not mirrored until this is called again.
  void setMirror(bool mirror);
  bool mirror() const { return mirror_; }

  /// How the picture fills the view; kept for later binds too.
  void setFitType(std::int64_t fitType);
  std::int64_t fitType() const { return fitType_; }

  /// The embedded video view; null while no stream is bound.
  const std::shared_ptr<LMRTCVideoView>& rtcVideoView() const { return rtcVideoView_; }
  void setRtcVideoView(std::shared_ptr<LMRTCVideoView> view) { rtcVideoView_ = std::move(view); }
  const std::shared_ptr<LMRTCVideoOutputStream>& outputStream() const { return outputStream_; }
  void setOutputStream(std::shared_ptr<LMRTCVideoOutputStream> stream) { outputStream_ = std::move(stream); }
  const std::shared_ptr<LMRTCVideoInputStream>& inputStream() const { return inputStream_; }
  void setInputStream(std::shared_ptr<LMRTCVideoInputStream> stream) { inputStream_ = std::move(stream); }
  const std::shared_ptr<LMRTCCDNInputStream>& cdnStream() const { return cdnStream_; }
  void setCdnStream(std::shared_ptr<LMRTCCDNInputStream> stream) { cdnStream_ = std::move(stream); }
  /// Whether a local stream was ever bound.
  bool isLocal() const { return isLocal_; }
  void setIsLocal(bool isLocal) { isLocal_ = isLocal; }

  /// Lets go of the video view and of every stream. Does nothing on a view that was never bound.
  void destroy();

  /// Resizes the embedded video view to this view's size.
  void layoutSubviews() override;

 private:
  void embedVideoView();
  void removeVideoView();

  bool mirror_ = false;
  std::int64_t fitType_ = 0;
  bool isLocal_ = false;
  std::shared_ptr<LMRTCVideoView> rtcVideoView_;
  std::shared_ptr<LMRTCVideoOutputStream> outputStream_;
  std::shared_ptr<LMRTCVideoInputStream> inputStream_;
  std::shared_ptr<LMRTCCDNInputStream> cdnStream_;
};
