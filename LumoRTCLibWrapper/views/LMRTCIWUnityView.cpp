#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"
#include "LumoRTCLibWrapper/views/UprightConverter.h"

namespace {

using Picture = std::shared_ptr<const LumoRTCI420Buffer>;

void fillBlack(LumoRTCI420Buffer& picture) {
  const auto fill = [](std::uint8_t* plane, std::int32_t stride, std::int32_t height, std::uint8_t value) {
    std::fill_n(plane, static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), value);
  };
  fill(picture.mutableDataY(), picture.strideY(), picture.height(), 16);
  fill(picture.mutableDataU(), picture.strideU(), picture.chromaHeight(), 128);
  fill(picture.mutableDataV(), picture.strideV(), picture.chromaHeight(), 128);
}

/// `picture` itself if it has tight rows for that size, else a copy of that size. What the picture lacks is
/// black in the copy.
Picture tight(Picture picture, std::int32_t width, std::int32_t height) {
  const bool isTight = picture->strideY() == width && picture->strideU() == picture->chromaWidth() &&
                       picture->strideV() == picture->chromaWidth() && picture->height() >= height;
  const std::int32_t copyWidth = std::min(width, picture->width());
  const std::int32_t copyHeight = std::min(height, picture->height());
  if (isTight || copyWidth < 1 || copyHeight < 1) return picture;

  auto copy = LumoRTCI420Buffer::create(width, height);
  if (copyWidth < width || copyHeight < height) fillBlack(*copy);
  LumoRTCI420Rotate(picture->dataY(), picture->strideY(), picture->dataU(), picture->strideU(),
                    picture->dataV(), picture->strideV(), copy->mutableDataY(), copy->strideY(),
                    copy->mutableDataU(), copy->strideU(), copy->mutableDataV(), copy->strideV(), copyWidth,
                    copyHeight, 0);
  return copy;
}

}  // namespace

std::shared_ptr<LMRTCIWUnityView> LMRTCIWUnityView::create() {
  return std::make_shared<LMRTCIWUnityView>(PrivateKey{});
}

std::int64_t LMRTCIWUnityView::getViewType() const { return LMRTCIWViewTypeUnity; }

std::shared_ptr<LMRTCIWUnityVideoFrame> LMRTCIWUnityView::getCurrentFrame() {
  if (length_ == 0) return nullptr;
  const std::lock_guard lock(lock_);
  if (frameBuffer_.empty()) return nullptr;  // another thread was faster
  auto frame = frameBuffer_.popFront();
  length_ = frameBuffer_.size();
  return frame;
}

void LMRTCIWUnityView::setSize(double, double) {}

void LMRTCIWUnityView::renderFrame(const LMRTCVideoFrame& frame) {
  if (!frame.rtcVideoFrame || !frame.rtcVideoFrame->buffer) return;
  auto picture = frame.rtcVideoFrame->buffer->toI420();
  if (!picture) return;
  auto record = std::make_shared<LMRTCIWUnityVideoFrame>();
  record->width = frame.width;
  record->height = frame.height;
  record->rotation = frame.rotation;
  record->yuvBuffer = tight(std::move(picture), frame.width, frame.height);
  append(std::move(record));
}

std::shared_ptr<LMRTCIWUnityVideoFrame> LMRTCIWUnityView::correctRotation(const LumoRTCI420Buffer& picture,
                                                                          std::int32_t rotation) {
  auto frame = std::make_shared<LMRTCIWUnityVideoFrame>();
  frame->yuvBuffer = lumo::rotatedCopy(picture, rotation);
  frame->width = frame->yuvBuffer->width();
  frame->height = frame->yuvBuffer->height();
  return frame;
}

void LMRTCIWUnityView::append(std::shared_ptr<LMRTCIWUnityVideoFrame> frame) {
  {
    const std::lock_guard lock(lock_);
    frameBuffer_.pushBack(std::move(frame));
    length_ = frameBuffer_.size();
  }
  while (takeOldestBeyond(frameLimit_)) ++droppedFrames_;
}

std::shared_ptr<LMRTCIWUnityVideoFrame> LMRTCIWUnityView::takeOldestBeyond(std::size_t limit) {
  const std::lock_guard lock(lock_);
  if (limit == 0 || frameBuffer_.size() <= limit) return nullptr;
  auto frame = frameBuffer_.popFront();
  length_ = frameBuffer_.size();
  return frame;
}
