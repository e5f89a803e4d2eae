#include <gtest/gtest.h>

#include <future>
#include <string>

#include "LumoRTCLocal/media/FrameDelivery.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

LMRTCVideoFrame frameOf(std::int64_t number, std::int32_t width = 4, std::int32_t height = 2,
                        std::int32_t rotation = 0) {
  return {std::make_shared<LumoRTCVideoFrame>(), width, height, rotation, number};
}

/// Notes sizes and the numbers of frames.
class NotingRenderer : public LMRTCVideoRenderer {
 public:
  void setSize(double width, double height) override {
    notes += std::to_string(static_cast<int>(width)) + "x" + std::to_string(static_cast<int>(height)) + " ";
  }
  void renderFrame(const LMRTCVideoFrame& frame) override {
    notes += std::to_string(frame.timestampMs) + " ";
  }

  std::string notes;
};

TEST(FrameDeliveryTest, TheNewestFrameWinsAndItsUprightSizeIsAnnouncedWhenItChanges) {
  const auto timeline = Timeline::manual();
  FrameDelivery delivery(*timeline, "view");
  const auto first = std::make_shared<NotingRenderer>();
  const auto second = std::make_shared<NotingRenderer>();
  const auto show = [&](const LMRTCVideoFrame& frame) {
    delivery.offer(frame);
    timeline->advance(0us);
  };
  delivery.offer(frameOf(0));
  delivery.setRenderer(first);
  for (int number = -3; number <= 1; ++number) delivery.offer(frameOf(number));
  delivery.offer({});  // without pixels
  EXPECT_EQ("", first->notes);
  timeline->advance(0us);
  EXPECT_EQ(4u, delivery.superseded());
  show(frameOf(2, 4, 2, 180));
  show(frameOf(3, 4, 2, 90));
  show(frameOf(4, 2, 4, 0));
  delivery.offer(frameOf(5, 2, 4));
  delivery.setRenderer(second);
  timeline->advance(0us);
  show(frameOf(6, 8, 6, 270));
  delivery.setRenderer(first);
  show(frameOf(7, 8, 6, 270));
  EXPECT_EQ("4x2 1 2 2x4 3 4 6x8 7 ", first->notes);
  EXPECT_EQ("2x4 5 6x8 6 ", second->notes);
  EXPECT_EQ(7u, delivery.delivered());
}

TEST(FrameDeliveryTest, DetachingDropsWhatWaits) {
  const auto timeline = Timeline::manual();
  FrameDelivery delivery(*timeline, "view");
  auto renderer = std::make_shared<NotingRenderer>();
  const auto frame = frameOf(1);
  delivery.setRenderer(renderer);
  delivery.offer(frame);
  delivery.setRenderer({});
  EXPECT_EQ(1, frame.rtcVideoFrame.use_count());
  delivery.setRenderer(renderer);
  delivery.offer(frame);
  renderer.reset();
  timeline->advance(0us);
  EXPECT_EQ(1, frame.rtcVideoFrame.use_count());
  EXPECT_EQ(0u, delivery.delivered());
}

TEST(FrameDeliveryTest, TheRendererMayDestroyTheDelivery) {
  struct Destroyer : LMRTCVideoRenderer {
    void setSize(double, double) override {}
    void renderFrame(const LMRTCVideoFrame&) override {
      delivery.reset();
      done.set_value();
    }
    std::unique_ptr<FrameDelivery> delivery;
    std::promise<void> done;
  };
  for (const auto& timeline : {Timeline::realTime(), Timeline::manual()}) {
    const auto renderer = std::make_shared<Destroyer>();
    renderer->delivery = std::make_unique<FrameDelivery>(*timeline, "view");
    renderer->delivery->setRenderer(renderer);
    renderer->delivery->offer(frameOf(1));
    timeline->advance(0us);
    renderer->done.get_future().get();
    EXPECT_EQ(nullptr, renderer->delivery);
  }
}

}  // namespace
}  // namespace lumo
