#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/system/UIImage.h"
#include "LumoRTCLocal/media/Picture.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

/// Red, green, blue and nothing, quarter by quarter.
std::shared_ptr<const UIImage> quarters() {
  const auto image = std::make_shared<UIImage>(UIImage{200, 200, {}});
  for (int i = 0; i < 200 * 200; ++i) {
    const int quarter = i / (100 * 200) * 2 + i / 100 % 2;
    for (const int opaque : {2, 1, 0, -1})  // blue, green, red and alpha
      image->bgra.push_back(quarter == opaque || (opaque < 0 && quarter < 3) ? 255 : 0);
  }
  return image;
}

/// The camera shows one colour.
class WatermarkTest : public CallTest {
 protected:
  WatermarkTest() {
    EXPECT_FALSE(local->setCamera(writeClip(folder, "still.mov", {.pictures = 1})));
    anna->onVideo(sent.sink());
    bob->onVideo(small.sink(), true);
    delegate->onWatermarkSet = recorded("set");
    join();
    publish(kVideo);
    advance(300ms);
  }

  Lines set(const std::shared_ptr<const UIImage>& image, double x, double y, double zoom) {
    EXPECT_EQ(0, engine->setWatermark(image, x, y, zoom));
    advance(300ms);
    return told();
  }
  /// One letter each for what stands left of, in the four quarters of, and right of the place at half of the
  /// width and three tenths of the height whose sides are a fifth of the width; a dot for the camera's
  /// colour.
  std::string around(const Picture& picture, std::int32_t rotation) {
    const Picture upright = rotated(picture, rotation, pool);
    const std::int32_t side = upright->width() / 5;
    std::string text;
    for (const auto& [column, row] : {std::pair(-1, 1), {1, 1}, {3, 1}, {1, 3}, {3, 3}, {5, 3}}) {
      const YuvColor color = colorAt(*upright, upright->width() / 2 + side * column / 4,
                                     upright->height() * 3 / 10 + side * row / 4);
      const auto is = [&](const YuvColor& other) { return isNear(color, other, 5); };
      text += is(yuvOf(255, 0, 0)) ? 'R' : is(yuvOf(0, 255, 0)) ? 'G' : is(yuvOf(0, 0, 255)) ? 'B' : '?';
      if (is(clipColor(0))) text.back() = '.';
    }
    return text;
  }

  const TempFolder folder;
  FramePool pool;
  Receiver sent, small;
  ParticipantPtr anna = add("anna"), bob = add("bob");
};

TEST_F(WatermarkTest, StandsUprightAtItsPlaceHoweverTheCameraIsTurned) {
  const auto view = LMRTCIWView::create();
  ASSERT_EQ(0, engine->setLocalView(view));
  ASSERT_EQ((Lines{"set 0 Success"}), set(quarters(), 0.5, 0.3, 0.2));
  for (const bool mirror : {false, true}) {
    LMRTCEngine::sharedInstance()->defaultVideoStream()->setIsEncoderMirror(mirror);
    for (std::int32_t turns = 0; turns < 4; ++turns) {
      SCOPED_TRACE(std::to_string(turns * 90) + (mirror ? " degrees, mirrored" : " degrees"));
      engine->setCameraCaptureOrientation(turns);
      advance(300ms);
      EXPECT_EQ(".RGB..", around(sent.picture, sent.rotation));
      EXPECT_EQ(".RGB..", around(small.picture, small.rotation));
      EXPECT_EQ(".RGB..", around(nativeView(view)->picture(), turns * 90));
    }
  }
}

TEST_F(WatermarkTest, IsClippedRefusedAndTakenAwayWithoutATraceInTheSource) {
  const auto colorThere = [this] { return colorAt(*sent.picture, 470, 330); };
  EXPECT_EQ((Lines{"set 0 Success"}), set(quarters(), 0.9, 0.5, 0.4));
  EXPECT_TRUE(isNear(yuvOf(255, 0, 0), colorThere(), 5)) << "its upper left quarter only";
  for (const auto& [x, y, zoom] :
       {std::tuple{-0.1, 0.0, 0.2}, {0.0, 1.1, 0.2}, {0.0, 0.0, 0.0}, {0.0, 0.0, 1.1}})
    EXPECT_TRUE(set(quarters(), x, y, zoom).front().starts_with("set -22 ")) << x << " " << y << " " << zoom;
  EXPECT_TRUE(set(std::make_shared<UIImage>(), 0, 0, 0.5).front().starts_with("set -22 "));
  EXPECT_TRUE(isNear(yuvOf(255, 0, 0), colorThere(), 5)) << "what is refused changes nothing";
  EXPECT_EQ(0, engine->removeWatermark());
  advance(300ms);
  EXPECT_TRUE(isNear(clipColor(0), colorThere(), 2));
}

}  // namespace
}  // namespace lumo::test
