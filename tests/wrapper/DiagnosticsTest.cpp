#include <functional>

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
         {"T setWatermark image:1, x:0.5, y:2, zoom:3", "sdk me_cam.setWaterMark set 0.5,2 3x0",
          "R setWatermark callback:onWatermarkSet, code:0, msg: Success"});
  sdk->engine->camera->supported = false;
  expect(0, engine->removeWatermark(),
         {"T removeWatermark", "sdk me_cam.setWaterMark nil 0,0 0x0",
          "E removeWatermark callback:onWatermarkRemoved, code:-22, msg: Set or remove WaterMark error"});
  MainQueue::runPending();
  EXPECT_TRACE("host onWatermarkSet 0 Success", "host onWatermarkRemoved -22 Set or remove WaterMark error");
}

TEST_F(DiagnosticsTest, EachOperationAsksForTheEngineFirst) {
  using Engine = LMRTCIWEngine;
  const auto observer = std::make_shared<LMRTCIWNetworkProbeDelegate>();
  struct Call {
    std::function<std::int64_t(Engine&)> call;
    std::string method, sent, entry = "";
  };
  const std::vector<Call> calls = {
      {[](Engine& e) { return e.startEchoTest(3); }, "startEchoTest", "startEchoTest 3",
       "T startEchoTest timeInterval:3\n"},
      {[](Engine& e) { return e.stopEchoTest(); }, "stopEchoTest", "stopEchoTest", "T stopEchoTest\n"},
      {[&](Engine& e) { return e.startNetworkProbe(observer); }, "startNetworkProbe",
       "setProbeTestDelegate engine\nsdk startRTCProbeTest", "T startRTCProbeTest delegate:1\n"},
      {[](Engine& e) { return e.stopNetworkProbe(); }, "stopNetworkProbe",
       "setProbeTestDelegate nil\nsdk stopRTCProbeTest"},
      {[](Engine& e) { return e.preconnectToMediaServer(); }, "preconnectToMediaServer",
       "preconnectMediaServer"},
      {[](Engine& e) { return e.enableSei(true); }, "enableSei", "setEnableSEI 1"},
      {[](Engine& e) { return e.sendSei("hi"); }, "sendSei", "sendSEI hi"},
  };
  const auto callAll = [&](std::int64_t code) {
    for (const auto& c : calls) {
      const std::string refused = "E " + c.method + " msg:rtcEngine is nil";
      expect(code, c.call(*engine), {c.entry + (code == 0 ? "sdk " + c.sent : refused)});
    }
  };
  expect(kNotJoined, engine->enableSei(true), {"E enableSei msg:room is nil or localUser is nil"});
  expect(kNotJoined, engine->sendSei("hi"), {"E sendSei msg:room is nil or localUser is nil"});
  expect(kBadParameter, engine->startNetworkProbe(nullptr),
         {"T startRTCProbeTest delegate:0", "E startNetworkProbe msg:rtcEngine is nil"});
  join();
  callAll(0);
  complete(0, {"host onNetworkProbeStarted 0 ok"});
  complete(2, {"host onNetworkProbeStopped 2 sdk2"});
  EXPECT_EQ(observer, engine->probeTestDelegate_());
  complete(
      5, {"E enableSei callback:onSeiEnabled, code:5, enable:0,message:sdk5", "host onSeiEnabled 0 5 sdk5"});
  room->me->seiAnswer = 77;
  EXPECT_EQ(77, engine->sendSei("x"));
  trace->take();
  engine->setRtcEngine(nullptr);
  callAll(kDestroyed);
  expect(kDestroyed, engine->setWatermark(nullptr, 0, 0, 1),
         {"T setWatermark image:0, x:0, y:0, zoom:1", kNoEngine});
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
