#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"

#include <cstddef>
#include <utility>

#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"

namespace {

/// A size as a pixel buffer takes it; what is no size at all becomes 0.
std::size_t pixels(double size) { return size >= 1 ? static_cast<std::size_t>(size) : 0; }

}  // namespace

/// The main-queue task of every frame; shared, so that a frame posts it without an allocation.
class LMRTCIWFlutterView::FrameNotice final : public lumo::MainQueue::Work {
 public:
  explicit FrameNotice(std::weak_ptr<LMRTCIWFlutterView> view) : view_(std::move(view)) {}
  void run() override {
    if (const auto view = view_.lock()) view->announceOnMainQueue();
  }

 private:
  std::weak_ptr<LMRTCIWFlutterView> view_;
};

std::shared_ptr<LMRTCIWFlutterView> LMRTCIWFlutterView::create() {
  auto view = std::make_shared<LMRTCIWFlutterView>(PrivateKey{});
  view->frameNotice_ = std::make_shared<FrameNotice>(view);
  return view;
}

std::int64_t LMRTCIWFlutterView::getViewType() const { return LMRTCIWViewTypeFlutter; }

void LMRTCIWFlutterView::resize() {
  const std::lock_guard lock(mutex_);
  bufferSize_ = {};
  lastFrameSize_ = {};
  isFirstFrameRendered_ = false;
}

CVPixelBufferRef LMRTCIWFlutterView::pixelBufferRef() const {
  const std::lock_guard lock(mutex_);
  return pixelBufferRef_;
}

void LMRTCIWFlutterView::setSize(double width, double height) {
  const Size size{width, height};
  {
    const std::lock_guard lock(mutex_);
    if (pixelBufferRef_ && bufferSize_ == size) return;
  }
  auto buffer =
      CVPixelBuffer::createBGRA(pixels(width), pixels(height), {{kCVPixelBufferIOSurfacePropertiesKey, {}}});
  const std::lock_guard lock(mutex_);
  pixelBufferRef_.swap(buffer);
  bufferSize_ = size;
}

void LMRTCIWFlutterView::renderFrame(const LMRTCVideoFrame& frame) {
  if (!frame.rtcVideoFrame || !frame.rtcVideoFrame->buffer) return;
  const auto picture = frame.rtcVideoFrame->buffer->toI420();
  if (picture && convert(*picture, frame.rotation)) announce(frame.width, frame.height);
}

std::shared_ptr<LumoRTCI420Buffer> LMRTCIWFlutterView::correctRotation(const LumoRTCI420Buffer& picture,
                                                                       std::int32_t rotation) {
  return lumo::rotatedCopy(picture, rotation);
}

bool LMRTCIWFlutterView::convert(const LumoRTCI420Buffer& picture, std::int32_t rotation) {
  const auto buffer = pixelBufferRef();
  if (!buffer) return false;
  const bool swaps = lumo::swapsSides(rotation);
  const auto width = static_cast<std::size_t>(swaps ? picture.height() : picture.width());
  const auto height = static_cast<std::size_t>(swaps ? picture.width() : picture.height());
  if (width > buffer->width() || height > buffer->height()) return false;

  buffer->lockBaseAddress();
  converter_.convert(picture, rotation, buffer->baseAddress(),
                     static_cast<std::int32_t>(buffer->bytesPerRow()));
  buffer->unlockBaseAddress();
  return true;
}

void LMRTCIWFlutterView::announce(std::int32_t width, std::int32_t height) {
  const Size size{static_cast<double>(width), static_cast<double>(height)};
  bool changed = false;
  {
    const std::lock_guard lock(mutex_);
    changed = lastFrameSize_ != size;
    lastFrameSize_ = size;
  }
  if (changed) {
    lumo::MainQueue::async([weak = weak_from_this(), width, height] {
      const auto self = weak.lock();
      const auto delegate = self ? self->textureViewDelegate() : nullptr;
      if (delegate && delegate->changeSize) delegate->changeSize(width, height);
    });
  }
  lumo::MainQueue::async(frameNotice_);
}

void LMRTCIWFlutterView::announceOnMainQueue() {
  const auto delegate = textureViewDelegate();
  if (delegate && delegate->frameRendered) delegate->frameRendered();
  if (isFirstFrameRendered_.exchange(true)) return;
  if (delegate && delegate->firstFrameRendered) delegate->firstFrameRendered();
}
