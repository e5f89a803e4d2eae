#include <cmath>
#include <limits>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLibWrapper/platform/system/UIImage.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

using Picture = std::shared_ptr<const LumoRTCI420Buffer>;

bool isNear(const YuvColor& a, const YuvColor& b) {
  return std::abs(a.y - b.y) <= 5 && std::abs(a.u - b.u) <= 5 && std::abs(a.v - b.v) <= 5;
}

/// Red, green, blue and nothing, quarter by quarter.
std::shared_ptr<const UIImage> quarters() {
  const std::uint8_t colors[4][4] = {
      {0, 0, 255, 255}, {0, 255, 0, 255}, {255, 0, 0, 255}, {255, 255, 255, 0}};
  const auto image = std::make_shared<UIImage>(UIImage{200, 200, {}});
  for (int i = 0; i < 200 * 200; ++i) {
    const auto& color = colors[i / (100 * 200) * 2 + i / 100 % 2];
    image->bgra.insert(image->bgra.end(), std::begin(color), std::end(color));
  }
  return image;
}

/// One letter for each quarter of `place` in a picture that stands upright; a dot where it is as in `clean`.
std::string quartersIn(const LumoRTCI420Buffer& upright, const LumoRTCI420Buffer& clean,
                       const PixelRect& place) {
  std::string text;
  for (const auto& [column, row] : {std::pair(1, 1), {3, 1}, {1, 3}, {3, 3}}) {
    const std::int32_t x = place.x + place.width * column / 4;
    const std::int32_t y = place.y + place.height * row / 4;
    const auto is = [&](const YuvColor& color) { return isNear(color, colorAt(upright, x, y)); };
    text += is(yuvOf(255, 0, 0)) ? 'R' : is(yuvOf(0, 255, 0)) ? 'G' : is(yuvOf(0, 0, 255)) ? 'B' : '?';
    if (is(colorAt(clean, x, y))) text.back() = '.';
  }
  return text;
}

/// How many pixels outside of `place` differ.
int strays(const LumoRTCI420Buffer& picture, const LumoRTCI420Buffer& clean, const PixelRect& place) {
  int count = 0;
  for (std::int32_t i = 0; i < picture.width() * picture.height(); ++i) {
    const std::int32_t x = i % picture.width(), y = i / picture.width();
    const bool isInside =
        x >= place.x && x < place.x + place.width && y >= place.y && y < place.y + place.height;
    if (!isInside && colorAt(picture, x, y) != colorAt(clean, x, y)) ++count;
  }
  return count;
}

/// The camera shows a still picture, whose buffer it sends again and again.
class WatermarkTest : public CallTest {
 protected:
  WatermarkTest() {
    EXPECT_FALSE(local->setCamera(writeClip(folder_, "still.mov", {.pictures = 1})));
    const auto sink = [this](Picture& newest) {
      return [this, &newest](const std::string&, const LMRTCVideoFrame& frame) {
        newest = rotated(frame.rtcVideoFrame->buffer->toI420(), frame.rotation, pool_);
      };
    };
    anna_ = add("anna");
    anna_->onVideo(sink(sent_));
    bob_ = add("bob");
    bob_->onVideo(sink(small_), true);
    delegate->onWatermarkSet = [this](std::int64_t code, const std::string&) { code_ = code; };
    join();
    publish(kVideo);
    advance(300ms);
  }

  std::int64_t set(const std::shared_ptr<const UIImage>& image, double x, double y, double zoom) {
    code_ = 99;
    EXPECT_EQ(0, engine->setWatermark(image, x, y, zoom));
    advance(300ms);
    return code_;
  }

  const TempFolder folder_;
  FramePool pool_;
  Picture sent_, small_;  // as they stand upright
  ParticipantPtr anna_, bob_;
  std::int64_t code_ = 0;
};

TEST_F(WatermarkTest, StandsUprightAtItsPlaceAndNowhereElse) {
  const auto view = LMRTCIWView::create({0, 0, 480, 640});
  ASSERT_EQ(0, engine->setLocalView(view));
  const auto preview = std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView());
  for (const bool mirror : {false, true}) {
    LMRTCEngine::sharedInstance()->defaultVideoStream()->setIsEncoderMirror(mirror);
    for (std::int32_t turns = 0; turns < 4; ++turns) {
      SCOPED_TRACE(std::to_string(turns * 90) + (mirror ? " degrees, mirrored" : " degrees"));
      engine->setCameraCaptureOrientation(turns);
      engine->removeWatermark();
      advance(300ms);
      const Picture clean = sent_;
      EXPECT_EQ(turns % 2 == 0 ? 480 : 640, clean->width());
      ASSERT_EQ(0, set(quarters(), 0.5, 0.3, 0.2));
      const PixelRect place{clean->width() / 2, clean->height() * 3 / 10, clean->width() / 5,
                            clean->width() / 5};
      EXPECT_EQ("RGB.", quartersIn(*sent_, *clean, place));
      EXPECT_EQ(0, strays(*sent_, *clean, place));
      const Picture shown = rotated(preview->picture(), turns * 90, pool_);
      EXPECT_EQ("RGB.", quartersIn(*shown, *clean, place));
      EXPECT_EQ("RGB.", quartersIn(*scaled(small_, clean->width(), clean->height(), pool_), *clean, place));
    }
  }
}

TEST_F(WatermarkTest, IsClippedRefusedAndTakenAwayWithoutATraceInTheSource) {
  const YuvColor clean = colorAt(*sent_, 470, 320);
  EXPECT_EQ(0, set(quarters(), 0.9, 0.5, 0.4));
  EXPECT_TRUE(isNear(yuvOf(255, 0, 0), colorAt(*sent_, 470, 330))) << "its upper left quarter only";
  EXPECT_EQ(0, engine->removeWatermark());
  advance(300ms);
  EXPECT_EQ(clean, colorAt(*sent_, 470, 330));
  EXPECT_EQ(0, set(std::make_shared<UIImage>(UIImage{1, 3, std::vector<std::uint8_t>(12, 255)}), 0, 0.5, 1));
  EXPECT_EQ(235, colorAt(*sent_, 470, 639).y) << "higher than the picture";

  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  for (const auto& [x, y, zoom] : {std::tuple{-0.1, 0.0, 0.2},
                                   {0.0, 1.1, 0.2},
                                   {0.0, 0.0, 0.0},
                                   {0.0, 0.0, 1.1},
                                   {std::nan(""), 0.0, 0.2},
                                   {0.0, 0.0, kInfinite}}) {
    EXPECT_EQ(-22, set(quarters(), x, y, zoom)) << x << " " << y << " " << zoom;
  }
  for (const UIImage& image : {UIImage{}, UIImage{2, 2, std::vector<std::uint8_t>(15)}, UIImage{-1, -1, {}}})
    EXPECT_EQ(-22, set(std::make_shared<UIImage>(image), 0, 0, 0.5));
  EXPECT_EQ(235, colorAt(*sent_, 470, 639).y) << "what is refused changes nothing";

  local->setSpeaker({});
  const std::size_t before = allocationCount();
  local->advance(2s);
  EXPECT_EQ(before, allocationCount());
}

TEST_F(CallTest, TheEchoTestPlaysTheMicrophoneAfterTheInterval) {
  std::vector<std::int16_t> heard;
  local->setSpeaker([&](const AudioBlock& block, Microseconds) {
    heard.insert(heard.end(), block.samples.begin(), block.samples.end());
  });
  /// What the next seconds bring: nothing at all, silence, or the microphone's tone.
  const auto listen = [&](int seconds) {
    std::string text;
    for (int i = 0; i < seconds; ++i) {
      heard.clear();
      advance(1s);
      text += heard.empty() ? '-' : std::abs(toneLevel(heard, 300) - 0.2) < 0.01 ? 'T' : 's';
    }
    return text;
  };
  ASSERT_EQ(0, engine->startEchoTest(2));
  EXPECT_EQ("ssTTssTT", listen(8)) << "outside a room";
  ASSERT_EQ(0, engine->startEchoTest(-5));
  EXPECT_EQ("sTsT", listen(4)) << "at least a second";
  engine->enableMicrophone(false);
  EXPECT_EQ("ss", listen(2));
  engine->enableMicrophone(true);
  ASSERT_EQ(0, engine->stopEchoTest());
  EXPECT_EQ("--", listen(2));

  ASSERT_EQ(0, engine->startEchoTest(1));
  join();
  EXPECT_EQ("ss", listen(2)) << "joining ends it";
  ASSERT_EQ(0, engine->startEchoTest(1));
  EXPECT_EQ("sT", listen(2)) << "in a room";
}

}  // namespace
}  // namespace lumo::test
