#include <algorithm>

#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

TEST_F(CallTest, GoesFromTheJoinToTheLastPicture) {
  delegate->onSubscribed = recorded("subscribed");
  delegate->onRemoteFirstFrame = recorded("first");
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  const auto bob = add("bob");
  join();
  publish(kBoth);
  EXPECT_EQ(0, bob->publishVideo());
  advance(0us);

  std::vector<std::shared_ptr<LMRTCIWView>> views(3);
  for (auto& view : views) view = LMRTCIWView::create({0, 0, 60, 80});
  EXPECT_EQ(0, engine->setLocalView(views[0]));
  EXPECT_EQ(0, engine->setRemoteView(views[1], "anna"));
  EXPECT_EQ(0, engine->setRemoteView(views[2], "bob"));
  engine->subscribe("anna", kBoth);
  engine->subscribe("bob", kVideo, true);
  advance(66ms);
  std::ranges::sort(lines);
  EXPECT_EQ((Lines{"first r anna 0", "first r anna 1", "first r bob 1", "subscribed anna 2 0 Success",
                   "subscribed bob 1 0 Success"}),
            lines);
  advance(2s);
  EXPECT_EQ("10", speaker.tenths(400));
  for (std::uint32_t source = 0; source < views.size(); ++source) {
    const auto video = nativeView(views[source]);
    EXPECT_EQ(source, readingOf(video->picture()).sourceNumber);
    EXPECT_NEAR(source == 2 ? 28 : 30, readingOf(video->picture()).frameNumber, 2);
    EXPECT_EQ(source == 2 ? 180 : 480, video->picture()->width());
    const Bitmap shown = video->snapshot();
    ASSERT_EQ(std::pair(60, 80), std::pair(shown.width, shown.height));
    const std::size_t strongest[] = {2, 1, 0};  // red, green and blue, in the order of the bytes
    for (const std::size_t byte : {0u, 1u, 2u})
      EXPECT_EQ(byte == strongest[source] ? 255 : 0, shown.bgra[byte] > 128 ? 255 : 0) << source;
  }
}

}  // namespace
}  // namespace lumo::test
