#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLocal/media/ViewPainter.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/local/sdk/LocalSdkTest.h"
#include "tests/support/AllocationCount.h"

namespace {

class AllocationTest : public LocalSdkTest {};

TEST_F(AllocationTest, SteadyMediaAllocatesNothing) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({microphone(), camera()}));
  ASSERT_EQ(0, subscribe({stream("anna", 0)}, {stream("anna", 1)}));
  const auto view = std::make_shared<lumo::LocalVideoView>();
  const auto preview = std::make_shared<lumo::LocalVideoView>();
  video("anna", 1)->setVideoView(view);
  camera()->setVideoView(preview);
  camera()->setIsEncoderMirror(true);
  std::size_t blocks = 0;
  std::size_t frames = 0;
  lumo::Bitmap painted{60, 80, {}};
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame& frame) {
    lumo::paint(*frame.rtcVideoFrame->buffer->toI420(), 90, LMRTCVideoFillModeAspectFit, true, painted);
    ++frames;
  });
  local->setSpeaker([&blocks](const lumo::AudioBlock&, lumo::Microseconds) { ++blocks; });
  local->advance(2s);

  const std::size_t framesBefore = frames + view->frameCount() + preview->frameCount();
  const std::size_t before = allocationCount();
  local->advance(2s);
  EXPECT_EQ(0u, allocationCount() - before);
  EXPECT_EQ(30u + 20 + 30, frames + view->frameCount() + preview->frameCount() - framesBefore);
  EXPECT_GT(blocks, 390u);

  local->setNetwork({.delay = 50ms, .jitter = 20ms, .loss = 0.1}, {.delay = 80ms});
  local->advance(3s);
  const std::size_t beforeLate = allocationCount();
  local->advance(3s);
  EXPECT_EQ(0u, allocationCount() - beforeLate) << "over a network";
}

}  // namespace
