#include "LumoRTCLocal/media/FrameWrapper.h"

#include <chrono>
#include <utility>

namespace lumo {
namespace {

class I420FrameBuffer : public LumoRTCVideoFrameBuffer {
 public:
  explicit I420FrameBuffer(std::shared_ptr<const LumoRTCI420Buffer> picture) : picture_(std::move(picture)) {}

  std::shared_ptr<const LumoRTCI420Buffer> toI420() override { return picture_; }

 private:
  const std::shared_ptr<const LumoRTCI420Buffer> picture_;
};

}  // namespace

LMRTCVideoFrame FrameWrapper::wrap(std::shared_ptr<const LumoRTCI420Buffer> picture, Microseconds time,
                                   std::int32_t rotation) const {
  LMRTCVideoFrame frame;
  frame.width = picture->width();
  frame.height = picture->height();
  frame.rotation = rotation;
  frame.timestampMs = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  auto buffer = makeRecycled<I420FrameBuffer>(recycler_, std::move(picture));
  frame.rtcVideoFrame = makeRecycled<LumoRTCVideoFrame>(recycler_, LumoRTCVideoFrame{std::move(buffer)});
  return frame;
}

}  // namespace lumo
