#include "LumoRTCLibWrapper/views/LMRTCIWView.h"

#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"

namespace {

/// Ends a stream's binding to its video view and forgets the stream.
template <class Stream>
void detach(std::shared_ptr<Stream>& stream) {
  if (stream) stream->setVideoView(nullptr);
  stream = nullptr;
}

}  // namespace

std::shared_ptr<LMRTCIWView> LMRTCIWView::create() { return create(UIRect{}); }

std::shared_ptr<LMRTCIWView> LMRTCIWView::create(const UIRect& frame) {
  return std::make_shared<LMRTCIWView>(frame);
}

std::int64_t LMRTCIWView::toLMRTCVideoFillMode(std::int64_t fitType) {
  return fitType >= 0 && fitType < 3 ? 2 - fitType : 0;
}

LMRTCIWView::LMRTCIWView(const UIRect& frame) : UIView(frame) {}

LMRTCIWView::~LMRTCIWView() = default;

std::int64_t LMRTCIWView::getViewType() const { return LMRTCIWViewTypeNative; }

void LMRTCIWView::setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>& stream) {
  embedVideoView();
  isLocal_ = true;
  if (stream) stream->setVideoView(rtcVideoView_);
  outputStream_ = stream;
}

void LMRTCIWView::removeLocalView() {
  detach(outputStream_);
  removeVideoView();
}

void LMRTCIWView::setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>& stream) {
  embedVideoView();
  if (stream) stream->setVideoView(rtcVideoView_);
  inputStream_ = stream;
}

void LMRTCIWView::removeRemoteView() {
  detach(inputStream_);
  removeVideoView();
}

void LMRTCIWView::setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>& stream) {
  embedVideoView();
  if (stream) stream->setVideoView(rtcVideoView_);
  cdnStream_ = stream;
}

void LMRTCIWView::removeInnerCdnView() {
  detach(cdnStream_);
  removeVideoView();
}

void LMRTCIWView::setMirror(bool mirror) {
  mirror_ = mirror;
  if (rtcVideoView_) rtcVideoView_->setIsPreviewMirror(mirror);
}

void LMRTCIWView::setFitType(std::int64_t fitType) {
  fitType_ = fitType;
  if (rtcVideoView_) rtcVideoView_->setFillMode(toLMRTCVideoFillMode(fitType));
}

void LMRTCIWView::destroy() {
  removeVideoView();
  detach(outputStream_);
  detach(inputStream_);
  detach(cdnStream_);
}

void LMRTCIWView::layoutSubviews() {
  UIView::layoutSubviews();
  if (!rtcVideoView_) return;
  const UIRect& old = rtcVideoView_->frame();
  rtcVideoView_->setFrame({old.x, old.y, frame().width, frame().height});
}

void LMRTCIWView::embedVideoView() {
  rtcVideoView_ = LMRTCVideoView::create({0, 0, frame().width, frame().height});
  if (!rtcVideoView_) return;
  rtcVideoView_->setFillMode(toLMRTCVideoFillMode(fitType_));
  addSubview(rtcVideoView_);
}

void LMRTCIWView::removeVideoView() {
  if (rtcVideoView_) rtcVideoView_->removeFromSuperview();
  rtcVideoView_ = nullptr;
}
