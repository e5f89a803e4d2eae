#include <atomic>
#include <thread>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/AllocationCount.h"

namespace lumo::test {
namespace {

/// Takes its first frame until the engine, which that destroys on another thread, has let go of its setup.
class DestroyingRenderer : public LMRTCVideoRenderer {
 public:
  explicit DestroyingRenderer(std::shared_ptr<LMRTCIWEngine> engine) : engine_(std::move(engine)) {}

  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame&) override {
    if (begun) return;
    destroyer = std::thread([this] {
      engine_->destroy();
      EXPECT_TRUE(ended);
    });
    while (engine_->iwEngineSetup()) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    ended = true;
    begun = true;
    begun.notify_all();
  }

  std::thread destroyer;
  std::atomic<bool> begun = false;
  std::atomic<bool> ended = false;

 private:
  const std::shared_ptr<LMRTCIWEngine> engine_;
};

TEST(LifecycleTest, DestroyWaitsForTheFrameThatASurfaceIsTaking) {
  LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
  Console::setSink({});
  const auto local = LumoRTCLocal::install();
  const auto renderer =
      std::make_shared<DestroyingRenderer>(LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>()));
  LMRTCEngine::sharedInstance()->defaultVideoStream()->setVideoView(renderer);
  renderer->begun.wait(false);
  renderer->destroyer.join();
}

TEST(LifecycleTest, TenThousandEnginesLeaveNothingBehind) {
  LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
  Console::setSink({});
  MainQueue::setOwnThread(false);
  const auto local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});
  const auto anna = local->join("r", "anna").participant;
  anna->publishVideo();
  const auto round = [&local] {
    const auto engine = LMRTCIWEngine::create();
    const auto view = LMRTCIWUnityView::create();
    engine->joinRoom("r", std::make_shared<LMRTCIWRoomSetup>());
    local->advance(0us);
    ASSERT_TRUE(engine->room());
    engine->setRemoteViewWithViewDelegate(view, "anna");
    engine->publish(kBoth);
    engine->subscribe("anna", kBoth);
    engine->destroy();
    local->advance(0us);
    MainQueue::runPending();
  };
  for (int i = 0; i < 100; ++i) round();
  const std::size_t before = liveAllocationCount();
  for (int i = 0; i < 10000; ++i) round();
  EXPECT_EQ(before, liveAllocationCount());
}

}  // namespace
}  // namespace lumo::test
