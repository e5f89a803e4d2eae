#include <gtest/gtest.h>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/FrameDelivery.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/media/ViewPainter.h"
#include "tests/support/AllocationCount.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

TEST(FramePoolTest, BuffersComeBackAndOutliveThePool) {
  auto pool = std::make_unique<FramePool>();
  auto first = pool->take(64, 48);
  const auto second = pool->take(64, 48);
  EXPECT_NE(first->dataY(), second->dataY());
  EXPECT_EQ(64, first->strideY());
  const std::uint8_t* const memory = first->dataY();
  first.reset();
  EXPECT_NE(memory, pool->take(48, 64)->dataY()) << "of another size";
  auto again = pool->take(64, 48);
  EXPECT_EQ(memory, again->dataY());
  pool.reset();
  again->mutableDataY()[0] = 1;
  second->mutableDataV()[32 * 24 - 1] = 1;
}

TEST(FramePoolTest, AWeakHolderKeepsABufferFromBeingUsedAgain) {
  FramePool pool;
  auto first = pool.take(8, 8);
  const std::uint8_t* const memory = first->dataY();
  std::weak_ptr<LumoRTCI420Buffer> weak = first;
  first.reset();
  EXPECT_EQ(nullptr, weak.lock());
  EXPECT_NE(memory, pool.take(8, 8)->dataY());
  weak.reset();
  EXPECT_EQ(memory, pool.take(8, 8)->dataY());
}

/// Paints every frame that it gets, mirrored and turned.
class PaintingRenderer : public LMRTCVideoRenderer {
 public:
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame& frame) override {
    paint(*frame.rtcVideoFrame->buffer->toI420(), 90, 1, true, bitmap);
    ++frames;
  }

  Bitmap bitmap{120, 90, {}};
  int frames = 0;
};

struct PictureHolder : LumoRTCVideoFrameBuffer {
  std::shared_ptr<const LumoRTCI420Buffer> toI420() override { return picture; }
  std::shared_ptr<const LumoRTCI420Buffer> picture;
};

TEST(SteadyStateTest, CaptureScalingDeliveryAndPaintingAllocateNothing) {
  const auto timeline = Timeline::manual();
  FrameDelivery delivery(*timeline, "view");
  const auto renderer = std::make_shared<PaintingRenderer>();
  delivery.setRenderer(renderer);
  TestPictureSource source(4);
  FramePool pool;
  const auto holder = std::make_shared<PictureHolder>();
  const LMRTCVideoFrame frame{std::make_shared<LumoRTCVideoFrame>(), 144, 176, 0, 0};
  frame.rtcVideoFrame->buffer = holder;
  const auto sendOne = [&] {
    const auto picture = source.frameAt(timeline->now(), {480, 640, 15});
    holder->picture = mirrored(*letterboxed(scaled(picture, 240, 320, pool), 144, 176, pool), pool);
    delivery.offer(frame);
    timeline->advance(66ms);
  };
  for (int i = 0; i < 3; ++i) sendOne();
  const std::size_t before = allocationCount();
  for (int i = 0; i < 50; ++i) sendOne();
  EXPECT_EQ(before, allocationCount());
  EXPECT_EQ(53, renderer->frames);
}

}  // namespace
}  // namespace lumo
