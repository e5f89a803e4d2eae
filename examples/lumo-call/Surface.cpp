#include "examples/lumo-call/Surface.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"

namespace {

lumo::Bitmap painted(const LumoRTCI420Buffer& picture, std::int32_t rotation, const UIRect& frame) {
  lumo::Bitmap bitmap{static_cast<std::int32_t>(frame.width), static_cast<std::int32_t>(frame.height), {}};
  lumo::paint(picture, rotation, LMRTCVideoFillModeAspectFit, false, bitmap);
  return bitmap;
}

/// A platform view: the SDK draws into it by itself.
class NativeSurface : public Surface {
 public:
  NativeSurface(const UIRect& frame, UIView& root) : view_(LMRTCIWView::create(frame)) {
    root.addSubview(view_);
  }

  std::shared_ptr<LMRTCIWViewDelegate> view() const override { return view_; }
  bool isBound() const override { return view_->rtcVideoView() != nullptr; }
  std::uint64_t frames() const override { return isBound() ? video()->frameCount() : 0; }
  lumo::Bitmap snapshot() const override { return isBound() ? video()->snapshot() : lumo::Bitmap{}; }

 private:
  std::shared_ptr<lumo::LocalVideoView> video() const {
    return std::dynamic_pointer_cast<lumo::LocalVideoView>(view_->rtcVideoView());
  }

  const std::shared_ptr<LMRTCIWView> view_;
};

/// A texture: the host hears of each frame and copies the pixels of the shared buffer.
class FlutterSurface : public Surface {
 public:
  explicit FlutterSurface(const UIRect& frame) : frame_(frame) {
    listener_->frameRendered = [this] { ++frames_; };
    view_->setTextureViewDelegate(listener_);
  }

  std::shared_ptr<LMRTCIWViewDelegate> view() const override { return view_; }
  bool isBound() const override { return view_->outputStream() || view_->intputStream(); }
  std::uint64_t frames() const override { return frames_; }

  lumo::Bitmap snapshot() const override {
    const auto pixels = view_->pixelBufferRef();
    if (!pixels) return {};
    lumo::FramePool pool;
    pixels->lockBaseAddress();
    const auto picture = lumo::fromBgra(
        pixels->baseAddress(), static_cast<std::int32_t>(pixels->bytesPerRow()),
        static_cast<std::int32_t>(pixels->width()), static_cast<std::int32_t>(pixels->height()), pool);
    pixels->unlockBaseAddress();
    return painted(*picture, 0, frame_);
  }

 private:
  const UIRect frame_;
  const std::shared_ptr<LMRTCIWFlutterView> view_ = LMRTCIWFlutterView::create();
  const std::shared_ptr<LMRTCIWFlutterViewDelegate> listener_ =
      std::make_shared<LMRTCIWFlutterViewDelegate>();
  std::uint64_t frames_ = 0;
};

/// A queue: the host takes the frames in its own drawing loop and draws the newest, turning it itself.
class UnitySurface : public Surface {
 public:
  explicit UnitySurface(const UIRect& frame) : frame_(frame) {}

  std::shared_ptr<LMRTCIWViewDelegate> view() const override { return view_; }
  bool isBound() const override { return view_->outputStream() || view_->intputStream(); }
  std::uint64_t frames() const override { return frames_; }

  void tick() override {
    while (auto frame = view_->getCurrentFrame()) {
      newest_ = std::move(frame);
      ++frames_;
    }
  }

  lumo::Bitmap snapshot() const override {
    return newest_ ? painted(*newest_->yuvBuffer, newest_->rotation, frame_) : lumo::Bitmap{};
  }

 private:
  const UIRect frame_;
  const std::shared_ptr<LMRTCIWUnityView> view_ = LMRTCIWUnityView::create();
  std::shared_ptr<LMRTCIWUnityVideoFrame> newest_;
  std::uint64_t frames_ = 0;
};

}  // namespace

std::unique_ptr<Surface> Surface::create(SurfaceKind kind, const UIRect& frame, UIView& root) {
  switch (kind) {
    case SurfaceKind::flutter:
      return std::make_unique<FlutterSurface>(frame);
    case SurfaceKind::unity:
      return std::make_unique<UnitySurface>(frame);
    case SurfaceKind::native:
      break;
  }
  return std::make_unique<NativeSurface>(frame, root);
}
