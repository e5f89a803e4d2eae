#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

// Diagnostics and extras: watermark, echo test, network probe, texts in the video stream, early connection.

namespace {

using Delegate = LMRTCIWEngineDelegate;

constexpr std::int64_t kUpLink = 1;
constexpr std::int64_t kDownLink = 2;

LMRTCIWNetworkProbeStats probeStats(const LMRTCProbeForm& form) {
  return {.qualityLevel = LMRTCIWConverter::toLMRTCIWNetworkQualityLevel(form.qualityLevel),
          .rtt = form.stat.rtt,
          .packetLostRate = form.stat.packetLoss};
}

}  // namespace

std::int64_t LMRTCIWEngine::setWatermark(const std::shared_ptr<const UIImage>& image, double x, double y,
                                         double zoom) {
  const CallFrame frame(__func__, "image:%@, x:%@, y:%@, zoom:%@", {image != nullptr, x, y, zoom});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  if (!image) return frame.fail(LMRTCWrapperCodeParameterError, "image is nil");
  // The zoom travels in the width: the SDK reads it there.
  const bool accepted = engine->defaultVideoStream()->setWaterMark(image, UIRect{x, y, zoom, 0});
  postWatermarkResult(frame, accepted, "onWatermarkSet", &Delegate::onWatermarkSet);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeWatermark() {
  const CallFrame frame(__func__);
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  const bool accepted = engine->defaultVideoStream()->setWaterMark(nullptr, UIRect{});
  postWatermarkResult(frame, accepted, "onWatermarkRemoved", &Delegate::onWatermarkRemoved);
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::postWatermarkResult(const CallFrame& frame, bool accepted, const char* name,
                                        CodeCallback LMRTCIWEngineDelegate::*field) {
  const std::int64_t code = accepted ? LMRTCWrapperCodeSuccess : LMRTCWrapperCodeWaterMarkError;
  const auto message = LMRTCIWCodeDefine::codeMessage(code);
  frame.result(code, "callback:%@, code:%@, msg: %@", {name, code, message});
  if (!listener(field)) return;
  lumo::MainQueue::async(
      [self = shared_from_this(), field, code, message] { self->notify(field, code, message); });
}

std::int64_t LMRTCIWEngine::startEchoTest(std::int64_t timeInterval) {
  const CallFrame frame(__func__, "timeInterval:%@", {timeInterval});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  engine->startEchoTest(static_cast<double>(timeInterval));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::stopEchoTest() {
  const CallFrame frame(__func__);
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  engine->stopEchoTest();
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::startNetworkProbe(const std::shared_ptr<LMRTCIWNetworkProbeDelegate>& observer) {
  const CallFrame frame("startRTCProbeTest", "delegate:%@",
                        {observer != nullptr});  // the tag is kept for hosts
  const auto engine = rtcEngine();
  if (!engine) return CallFrame::failAs(__func__, LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  // The text is kept for hosts.
  if (!observer) return CallFrame::failAs(__func__, LMRTCWrapperCodeParameterError, "rtcEngine is nil");
  setProbeTestDelegate_(observer);
  engine->setProbeTestDelegate(asDelegate<LMRTCProbeTestDelegate>());
  engine->startRTCProbeTest([self = shared_from_this()](std::int64_t code) {
    self->notify(&Delegate::onNetworkProbeStarted, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::stopNetworkProbe() {
  const auto engine = rtcEngine();
  if (!engine) return CallFrame::failAs(__func__, LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  engine->setProbeTestDelegate({});
  engine->stopRTCProbeTest([self = shared_from_this()](std::int64_t code) {
    self->notify(&Delegate::onNetworkProbeStopped, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::enableSei(bool enable) {
  if (!rtcEngine()) return CallFrame::failAs(__func__, LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  const auto joined = joinedRoom();
  if (!joined) {
    return CallFrame::failAs(__func__, LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  }
  joined.localUser->setEnableSEI(enable, [self = shared_from_this(), enable](std::int64_t code) {
    const bool effective = code == 0 ? enable : !enable;
    const auto message = LMRTCCodeDefine::codeDesc(code);
    LMIMIWLog::result(code, "enableSei", "callback:%@, code:%@, enable:%@,message:%@",
                      {"onSeiEnabled", code, effective, message});
    self->notify(&Delegate::onSeiEnabled, effective, code, message);
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::sendSei(const std::string& sei) {
  if (!rtcEngine()) return CallFrame::failAs(__func__, LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  const auto joined = joinedRoom();
  if (!joined) {
    return CallFrame::failAs(__func__, LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  }
  return joined.localUser->sendSEI(sei);
}

std::int64_t LMRTCIWEngine::preconnectToMediaServer() {
  const auto engine = rtcEngine();
  if (!engine) return CallFrame::failAs(__func__, LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  engine->preconnectMediaServer();
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::didReportProbeForms(const std::vector<LMRTCProbeForm>& forms) {
  for (const auto& form : forms) {
    const auto observer = probeListener();
    if (!observer) return;
    const auto& up = observer->onNetworkProbeUpLinkStats;
    const auto& down = observer->onNetworkProbeDownLinkStats;
    if (form.direction == kUpLink && up) up(probeStats(form));
    if (form.direction == kDownLink && down) down(probeStats(form));
  }
}

void LMRTCIWEngine::didRTCProbeComplete() { notifyProbeFinished(LMRTCWrapperCodeSuccess, "success"); }

void LMRTCIWEngine::didRTCProbeInterrput(std::int64_t code) {
  notifyProbeFinished(code, LMRTCCodeDefine::codeDesc(code));
}

void LMRTCIWEngineBase::notifyProbeFinished(std::int64_t code, const std::string& message) const {
  const auto observer = probeListener();
  if (observer && observer->onNetworkProbeFinished) observer->onNetworkProbeFinished(code, message);
}

lumo::HostCallback<LMRTCIWNetworkProbeDelegate> LMRTCIWEngineBase::probeListener() const {
  auto pass = callbackGate_.enter();
  auto observer = pass ? probeTestDelegate_() : nullptr;
  return {std::move(pass), std::move(observer)};
}
