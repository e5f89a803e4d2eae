#include "LumoRTCLocal/sdk/LocalVideoView.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"

namespace lumo {
namespace {

constexpr double kLargestSide = 16384;  // a frame rectangle may hold any number

std::int32_t pixels(double length) {
  return static_cast<std::int32_t>(std::lround(std::clamp(length, 0.0, kLargestSide)));
}

Bitmap blackBitmap(std::int32_t width, std::int32_t height) {
  Bitmap bitmap{width, height, {}};
  bitmap.bgra.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  for (std::size_t alpha = 3; alpha < bitmap.bgra.size(); alpha += 4) bitmap.bgra[alpha] = 255;
  return bitmap;
}

}  // namespace

Bitmap LocalVideoView::snapshot() const {
  const Content shown = content();
  Bitmap bitmap = blackBitmap(pixels(frame().width), pixels(frame().height));
  if (shown.picture) paint(*shown.picture, shown.rotation, shown.fillMode, shown.mirror, bitmap);
  return bitmap;
}

std::uint64_t LocalVideoView::frameCount() const { return content().frames; }

std::shared_ptr<const LumoRTCI420Buffer> LocalVideoView::picture() const { return content().picture; }

std::int64_t LocalVideoView::timestampMs() const { return content().timestampMs; }

void LocalVideoView::setFillMode(std::int64_t mode) {
  const std::lock_guard lock(mutex_);
  content_.fillMode = mode;
}

void LocalVideoView::setIsPreviewMirror(bool mirror) {
  const std::lock_guard lock(mutex_);
  content_.mirror = mirror;
}

void LocalVideoView::setSize(double /*width*/, double /*height*/) {}

void LocalVideoView::renderFrame(const LMRTCVideoFrame& frame) {
  if (!frame.rtcVideoFrame || !frame.rtcVideoFrame->buffer) return;
  auto picture = frame.rtcVideoFrame->buffer->toI420();
  const std::lock_guard lock(mutex_);
  std::swap(content_.picture, picture);
  content_.rotation = frame.rotation;
  content_.timestampMs = frame.timestampMs;
  ++content_.frames;
}

LocalVideoView::Content LocalVideoView::content() const {
  const std::lock_guard lock(mutex_);
  return content_;
}

}  // namespace lumo
