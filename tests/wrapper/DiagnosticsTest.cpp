#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using DiagnosticsTest = EngineTest;

TEST_F(DiagnosticsTest, AWatermarkIsReportedOnTheMainQueue) {
  const auto image = std::make_shared<UIImage>();
  expect(kBadParameter, engine->setWatermark(nullptr, 1, 2, 3),
         {"T setWatermark image:0, x:1, y:2, zoom:3", "E: image is nil"});
  expect(0, engine->setWatermark(image, 0.5, 2, 3),
         {"T setWatermark image:1, x:0.5, y:2, zoom:3", "-> me_cam.setWaterMark set 0.5,2 3x0",
          "R setWatermark callback:onWatermarkSet, code:0, msg: Success"});
  sdk->engine->camera->supported = false;
  expect(0, engine->removeWatermark(),
         {"T removeWatermark", "-> me_cam.setWaterMark nil 0,0 0x0",
          "E removeWatermark callback:onWatermarkRemoved, code:-22, msg: Set or remove WaterMark error"});
  MainQueue::runPending();
  EXPECT_TRACE("host onWatermarkSet 0 Success", "host onWatermarkRemoved -22 Set or remove WaterMark error");
}

TEST_F(DiagnosticsTest, TestsAndSeiReachTheSdkAndReportTheirOutcome) {
  const auto observer = std::make_shared<LMRTCIWNetworkProbeDelegate>();
  join();
  expect(0, engine->startEchoTest(3), {"T startEchoTest timeInterval:3", "-> startEchoTest 3"});
  expect(0, engine->stopEchoTest(), {"T stopEchoTest", "-> stopEchoTest"});
  expect(0, engine->preconnectToMediaServer(), {"-> preconnectMediaServer"});
  expect(0, engine->startNetworkProbe(observer),
         {"T startRTCProbeTest delegate:1", "-> setProbeTestDelegate engine", "-> startRTCProbeTest"});
  complete(0, {"host onNetworkProbeStarted 0 ok"});
  expect(0, engine->stopNetworkProbe(), {"-> setProbeTestDelegate nil", "-> stopRTCProbeTest"});
  complete(2, {"host onNetworkProbeStopped 2 sdk2"});
  expect(0, engine->enableSei(true), {"-> setEnableSEI 1"});
  complete(
      5, {"E enableSei callback:onSeiEnabled, code:5, enable:0,message:sdk5", "host onSeiEnabled 0 5 sdk5"});
  room->me->seiAnswer = 77;
  expect(77, engine->sendSei("hi"), {"-> sendSEI hi"});

  expect(kBadParameter, engine->startNetworkProbe(nullptr),
         {"T startRTCProbeTest delegate:0", "E startNetworkProbe msg:rtcEngine is nil"});
  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->sendSei("hi"), {"E sendSei msg:rtcEngine is nil"});
  expect(kDestroyed, engine->removeWatermark(), {"T removeWatermark", kNoEngine});
}

TEST_F(DiagnosticsTest, ProbeResultsReachTheProbesListenerByDirection) {
  const auto observer = std::make_shared<LMRTCIWNetworkProbeDelegate>();
  const auto print = [this](const char* name) {
    return [this, name](const LMRTCIWNetworkProbeStats& stats) {
      trace->add(name + format(" %@ %@", {stats.description(), static_cast<double>(stats.packetLostRate)}));
    };
  };
  observer->onNetworkProbeUpLinkStats = print("up");
  observer->onNetworkProbeDownLinkStats = print("down");
  observer->onNetworkProbeFinished = [this](std::int64_t code, const std::string& message) {
    trace->add(format("finished %@ %@", {code, message}));
  };
  engine->startNetworkProbe(observer);
  trace->take();
  const auto events = sdk->engine->probeDelegate.get().lock();
  events->didReportProbeForms({{1, 5, {30, 0.5F}}, {0, 1, {}}, {2, 6, {40, 0.25F}}, {3, 1, {}}});
  events->didRTCProbeComplete();
  events->didRTCProbeInterrput(3);
  EXPECT_TRACE("up qualityLevel:5, rtt:30 0.5", "down qualityLevel:0, rtt:40 0.25", "finished 0 success",
               "finished 3 sdk3");
  *observer = {};
  events->didReportProbeForms({{1, 1, {}}, {2, 1, {}}});
  events->didRTCProbeComplete();
  EXPECT_TRACE();
}

}  // namespace
}  // namespace lumo
