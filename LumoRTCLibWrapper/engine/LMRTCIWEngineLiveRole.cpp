#include <utility>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"

// Live role switching.

namespace {

using Delegate = LMRTCIWEngineDelegate;

constexpr std::int64_t kNotLive = -21;  // a code without a name; its text is "--"

/// A refusal that only the console hears of.
std::int64_t refuse(std::int64_t code) {
  lumo::Console::write("LMRTCIWEngine switchLiveRole role return: %zd", {code});
  return code;
}

void logStep(const char* message) { LMIMIWLog::step("switchLiveRole", "msg:%@", {message}); }

}  // namespace

std::int64_t LMRTCIWEngine::switchLiveRole(std::int64_t role) {
  const CallFrame frame(__func__, "role:%@", {role});
  if (!rtcEngine()) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  const auto joined = joinedRoom();
  const auto setup = iwRoomSetup();
  if (!joined || !setup) {
    return frame.fail(LMRTCWrapperCodeLocalUserNotJoined,
                      "room is nil or localUser is nil or iwRoomSetup is nil");
  }
  if (setup->role == LMRTCIWRoleMeetingMember) return refuse(kNotLive);
  if (setup->role == role) return refuse(LMRTCWrapperCodeParameterError);
  if (role == LMRTCIWRoleLiveAudience) {
    switchToAudience(*joined.localUser);
  } else if (role == LMRTCIWRoleLiveBroadcaster) {
    switchToBroadcaster(*joined.localUser);
  } else {
    return refuse(LMRTCWrapperCodeParameterError);
  }
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::switchToBroadcaster(LMRTCLocalUser& localUser) {
  const auto self = shared_from_this();
  localUser.switchToBroadcaster(
      nullptr,
      [self](const std::shared_ptr<LMRTCLiveInfo>& liveInfo) {
        if (self->listener(&Delegate::onLiveRoleSwitched)) {
          logStep("LMRTCIWRoleLiveBroadcaster onLiveRoleSwitched");
        }
        self->keepRole(LMRTCIWRoleLiveBroadcaster, liveInfo);
        self->notifyRoleSwitched(LMRTCWrapperCodeSuccess);
      },
      [self](std::int64_t code) {
        logStep("LMRTCIWRoleLiveBroadcaster onFailed");
        self->notifyRoleSwitched(code);
      },
      [self] {
        logStep("LMRTCIWRoleLiveBroadcaster onKicked");
        self->handleKickedWhileSwitching("switch to broadcaster error");
      });
}

void LMRTCIWEngine::switchToAudience(LMRTCLocalUser& localUser) {
  const auto self = shared_from_this();
  localUser.switchToAudienceOnSucceed(
      [self] {
        self->keepRole(LMRTCIWRoleLiveAudience, nullptr);
        self->notifyRoleSwitched(LMRTCWrapperCodeSuccess);
        const auto main = self->room();
        if (!main || !self->listener(&Delegate::onRemoteLiveMixPublished)) return;
        const auto streams = main->getLiveStreams();
        parseInPutStream(streams,
                         [&self](bool, const std::string&, const std::string&, std::int64_t mediaType) {
                           self->notify(&Delegate::onRemoteLiveMixPublished, mediaType);
                         });
      },
      [self](std::int64_t code) {
        logStep("switchToAudienceOnSucceed onFailed");
        self->notifyRoleSwitched(code);
      },
      [self] {
        logStep("switchToAudienceOnSucceed onKicked");
        self->handleKickedWhileSwitching("switch to audience error");
      });
}

void LMRTCIWEngineBase::keepLiveInfo(std::shared_ptr<LMRTCLiveInfo> liveInfo) {
  if (const auto pass = callbackGate_.enter()) setLiveInfo(std::move(liveInfo));
}

void LMRTCIWEngineBase::keepRole(std::int64_t role, std::shared_ptr<LMRTCLiveInfo> liveInfo) {
  const auto pass = callbackGate_.enter();
  if (!pass) return;
  setLiveInfo(std::move(liveInfo));
  const auto setup = iwRoomSetup();
  if (!setup) return;
  // A copy takes the record's place, because other threads may be reading it.
  auto changed = std::make_shared<LMRTCIWRoomSetup>(*setup);
  changed->role = role;
  setIwRoomSetup(std::move(changed));
}

void LMRTCIWEngineBase::notifyRoleSwitched(std::int64_t code) const {
  const auto setup = iwRoomSetup();
  notify(&Delegate::onLiveRoleSwitched, setup ? setup->role : LMRTCIWRoleMeetingMember, code,
         LMRTCCodeDefine::codeDesc(code));
}

void LMRTCIWEngine::handleKickedWhileSwitching(const char* message) {
  setIwRoomSetup(nullptr);
  setLiveInfo(nullptr);
  const auto main = room();
  notify(&Delegate::onKicked, main ? main->roomId() : std::string(), message);
}
