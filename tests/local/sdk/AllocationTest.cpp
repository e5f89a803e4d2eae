#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "tests/local/sdk/LocalSdkTest.h"
#include "tests/support/AllocationCount.h"

namespace {

class AllocationTest : public LocalSdkTest {};

TEST_F(AllocationTest, SteadyMediaAllocatesNothing) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({microphone(), camera()}));
  ASSERT_EQ(0, subscribe({stream("anna", 0)}, {stream("anna", 1)}));
  show(stream("anna", 1), view);
  camera()->setVideoView(preview);
  camera()->setIsEncoderMirror(true);
  std::size_t frames = 0, blocks = 0;
  anna->onVideo([&frames](const std::string&, const LMRTCVideoFrame&) { ++frames; });
  local->setSpeaker([&blocks](const lumo::AudioBlock&, lumo::Microseconds) { ++blocks; });
  local->advance(2s);

  const std::size_t before = allocationCount();
  local->advance(2s);
  EXPECT_EQ(0u, allocationCount() - before);
  EXPECT_TRUE(frames > 55 && view->frameCount() > 35 && preview->frameCount() > 55 && blocks > 390);

  local->setNetwork({.delay = 50ms, .jitter = 20ms, .loss = 0.1}, {.delay = 80ms});
  local->advance(3s);
  const std::size_t beforeLate = allocationCount();
  local->advance(3s);
  EXPECT_EQ(0u, allocationCount() - beforeLate) << "over a network";
}

}  // namespace
