#include <mutex>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

// Lifecycle and room.

namespace {

constexpr char kVersion[] = "V1.0_20251222171809_master_ef94573";

/// The process's engine and the guard that makes it once. `destroy` replaces both.
struct SharedInstance {
  std::once_flag once;
  std::shared_ptr<LMRTCIWEngine> engine;
};

lumo::Cell<std::shared_ptr<SharedInstance>>& sharedInstance() {
  static lumo::Cell<std::shared_ptr<SharedInstance>> cell(std::make_shared<SharedInstance>());
  return cell;
}

LMRTCConfig sdkConfig(const LMRTCIWEngineSetup& setup) {
  LMRTCConfig config;
  config.setIsEnableAutoReconnect(setup.reconnectable);
  config.setEnableSRTP(setup.enableSRTP);
  config.setStatusReportInterval(setup.statsReportInterval);
  config.setEnableMixWithOthers(setup.audioSetup && setup.audioSetup->mixOtherAppsAudio);
  config.setEnableVersionMismatch(setup.enableVersionMatch);
  return config;
}

LMRTCRoomConfig roomConfig(const LMRTCIWRoomSetup& setup) {
  LMRTCRoomConfig config;
  if (setup.mediaType == LMRTCIWMediaTypeAudio) config.setLiveType(LMRTCLiveTypeAudio);
  if (setup.mediaType == LMRTCIWMediaTypeAudioVideo) config.setLiveType(LMRTCLiveTypeAudioVideo);
  switch (setup.role) {
    case LMRTCIWRoleMeetingMember:
      config.setRoomType(LMRTCRoomTypeNormal);
      break;
    case LMRTCIWRoleLiveBroadcaster:
      config.setRoomType(LMRTCRoomTypeLive);
      config.setRoleType(LMRTCRoleTypeBroadcaster);
      break;
    case LMRTCIWRoleLiveAudience:
      config.setRoomType(LMRTCRoomTypeLive);
      config.setRoleType(LMRTCRoleTypeAudience);
      break;
    default:
      break;  // the SDK's defaults
  }
  config.setJoinRoomType(LMRTCIWConverter::toLMRTCJoinRoomType(static_cast<std::int64_t>(setup.joinType)));
  return config;
}

}  // namespace

std::shared_ptr<LMRTCIWEngine> LMRTCIWEngine::create() {
  LMIMIWLog::entry(__func__);
  return create(std::make_shared<LMRTCIWEngineSetup>());
}

std::shared_ptr<LMRTCIWEngine> LMRTCIWEngine::create(const std::shared_ptr<LMRTCIWEngineSetup>& setup) {
  const auto instance = sharedInstance().get();
  std::call_once(instance->once, [&instance, &setup] {
    LMIMIWLog::entry("create", "msg:%@", {"LMRTCIWEngine create once"});
    instance->engine = std::make_shared<LMRTCIWEngine>(PrivateKey{});
    instance->engine->init(setup);
  });
  return instance->engine;
}

LMRTCIWEngine::LMRTCIWEngine(PrivateKey) {}

LMRTCIWEngine::~LMRTCIWEngine() = default;

void LMRTCIWEngine::init(const std::shared_ptr<LMRTCIWEngineSetup>& setup) {
  LMIMIWLog::entry(__func__, "msg:%@", {"LMRTCIWEngine create init"});
  const auto engine = LMRTCEngine::sharedInstance();
  setRtcEngine(engine);
  if (engine) engine->setDelegate(asDelegate<LMRTCEngineEventDelegate>());
  setIwEngineSetup(setup);
  if (engine) {
    if (setup && !setup->mediaUrl.empty()) engine->setMediaServerUrl(setup->mediaUrl);
    engine->initWithConfig(setup ? sdkConfig(*setup) : LMRTCConfig());
  }
  lumo::Console::write("LumoRTCLibWrapper commit: %@", {kVersion});
}

void LMRTCIWEngine::destroy() {
  const auto self = shared_from_this();  // the shared instance may be the last owner
  LMIMIWLog::entry(__func__);
  callbackGate_.close();
  setIwEngineSetup(nullptr);
  setRoom(nullptr);
  setLiveInfo(nullptr);
  setIwLocalVideoView(nullptr);
  setIwLiveMixVideoView(nullptr);
  setIwLiveMixInnerCdnVideoView(nullptr);
  emptyCaches();
  setIwRoomSetup(nullptr);
  if (const auto engine = rtcEngine()) engine->unInit();
  setRtcEngine(nullptr);
  setAudioMixPlayProgress(0);
  setAudioMixingFileUrl(std::nullopt);
  setSessionId(std::nullopt);
  if (sharedInstance().get()->engine == self) sharedInstance().set(std::make_shared<SharedInstance>());
  lumo::Console::write("LMRTCIWEngine destroy end");
}

void LMRTCIWEngine::emptyCaches() {
  setEffectSoundIdDict({});
  setRemoteVideoViewDict({});
  for (const auto& [tag, custom] : customStreams_.exchange({})) {
    if (!custom || custom->type != LMRTCIWCustomStream::kFile) continue;
    if (const auto file = std::dynamic_pointer_cast<LMRTCFileVideoOutputStream>(custom->stream)) file->stop();
  }
  setLocalCustomViews({});
  setRemoteCustomViews({});
  setRemoteAudioReceivedDelegates({});
  setRemoteVideoProcessedDelegates({});
  setLocalCustomVideoProcessedDelegates({});
  setRemoteCustomVideoProcessedDelegates({});
  setRemoteCustomAudioProcessedDelegates({});
  for (const auto& [roomId, subRoom] : subs_.exchange({})) {
    if (subRoom) subRoom->setDelegate({});
  }
}

void LMRTCIWEngine::reset() {
  setInnerCDNVideoResolution(-1);
  setInnerCDNVideoFps(-1);
}

std::string LMRTCIWEngine::getLumoRTCLibWrapperVersion() { return kVersion; }

std::int64_t LMRTCIWEngine::joinRoom(const std::string& roomId,
                                     const std::shared_ptr<LMRTCIWRoomSetup>& setup) {
  const CallFrame frame(__func__, "roomId:%@", {roomId});
  if (!setup) return frame.fail(LMRTCWrapperCodeParameterError, "setup is nil");

  setIwRoomSetup(setup);
  lumo::Console::write("LMRTCIWEngine joinroom config: %@", {*setup});
  if (const auto engine = rtcEngine()) {
    engine->joinRoom(
        roomId, roomConfig(*setup),
        [self = shared_from_this(), setup](std::int64_t code, const std::shared_ptr<LMRTCRoom>& room) {
          self->handleJoined(code, room, *setup);
        });
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::leaveRoom() {
  const CallFrame frame(__func__, "msg:%@", {"LMRTCIWEngine leaveRoom"});
  if (const auto engine = rtcEngine()) {
    engine->leaveRoom([self = shared_from_this()](std::int64_t code) {
      lumo::Console::write("LMRTCIWEngine leaveRoom code: %zd", {code});
      self->reset();
      self->notify(&LMRTCIWEngineDelegate::onRoomLeft, code, LMRTCCodeDefine::codeDesc(code));
    });
  }
  return LMRTCWrapperCodeSuccess;
}

std::shared_ptr<LMRTCRemoteUser> LMRTCIWEngine::getRemoteUser(const std::string& userId) {
  const CallFrame frame(__func__, "userId:%@", {userId});
  return getRemoteUserRoom(userId).user;
}

std::string LMRTCIWEngine::getSessionId() {
  const CallFrame frame(__func__);
  const auto joined = joinedRoom();
  if (!joined || !iwRoomSetup()) {
    frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil or iwRoomSetup is nil");
    return {};
  }
  return joined.room->sessionId();
}

LMRTCIWEngineBase::JoinedRoom LMRTCIWEngineBase::joinedRoom() const {
  auto main = room();
  auto localUser = main ? main->localUser() : nullptr;
  if (!localUser) return {};
  return {std::move(main), std::move(localUser)};
}

LMRTCIWEngineBase::RemoteUserRoom LMRTCIWEngineBase::getRemoteUserRoom(const std::string& userId) const {
  if (auto main = room()) {
    if (auto user = main->getRemoteUser(userId)) return {std::move(main), std::move(user)};
  }
  for (const auto& [roomId, subRoom] : subs()) {
    if (auto user = subRoom ? subRoom->getRemoteUser(userId) : nullptr) return {subRoom, std::move(user)};
  }
  return {};
}

void LMRTCIWEngine::handleJoined(std::int64_t code, const std::shared_ptr<LMRTCRoom>& joined,
                                 const LMRTCIWRoomSetup& setup) {
  lumo::Console::write("LMRTCIWEngine joinRoom completion code: %zd", {code});
  const auto pass = callbackGate_.enter();
  const bool success = joined && code == 0 && pass;
  if (success) {
    setRoom(joined);
    joined->setDelegate(asDelegate<LMRTCRoomEventDelegate>());
  }
  notify(&LMRTCIWEngineDelegate::onRoomJoined, code, LMRTCCodeDefine::codeDesc(code));
  if (!success) return;

  for (const auto& roomId : joined->otherRoomIdArray())
    notify(&LMRTCIWEngineDelegate::onSubRoomBanded, roomId);
  callbackRemoteUsers(*joined);
  if (setup.role == LMRTCIWRoleLiveAudience) replayLiveMix(*joined, setup);
}

void LMRTCIWEngineBase::replayLiveMix(const LMRTCRoom& joined, const LMRTCIWRoomSetup& setup) const {
  const auto logResult = [&setup](const char* callback) {
    LMIMIWLog::result(LMRTCWrapperCodeSuccess, "joinRoom", "callback:%@, code:%@, role:%@,setup:%@",
                      {callback, LMRTCWrapperCodeSuccess, LMRTCIWRoleLiveAudience, setup});
  };
  if (listener(&LMRTCIWEngineDelegate::onRemoteLiveMixPublished)) {
    const auto streams = joined.getLiveStreams();
    parseInPutStream(streams, [&](bool, const std::string&, const std::string&, std::int64_t mediaType) {
      // Anew for each, because the one before may have destroyed the engine or replaced the listener.
      const auto callback = listener(&LMRTCIWEngineDelegate::onRemoteLiveMixPublished);
      if (!callback) return;
      logResult("onRemoteLiveMixPublished");
      (*callback)(mediaType);
    });
  }
  const auto callback = listener(&LMRTCIWEngineDelegate::onRemoteLiveMixInnerCdnStreamPublished);
  if (callback && joined.getCDNStream()) {
    logResult("onRemoteLiveMixInnerCdnStreamPublished");
    (*callback)();
  }
}

void LMRTCIWEngineBase::callbackRemoteUsers(const LMRTCBaseRoom& joined) const {
  if (!listener(&LMRTCIWEngineDelegate::onUserJoined)) return;
  const std::string& roomId = joined.roomId();
  for (const auto& user : joined.remoteUsers()) {
    const auto userId = user->userId();
    lumo::Console::write("LMRTCIWEngine joinRoom completion remoteUser Joined: %@ userId: %@",
                         {roomId, userId});
    notify(&LMRTCIWEngineDelegate::onUserJoined, roomId, userId.value_or(""));
    callbackRemoteUser(*user, roomId);
  }
}

void LMRTCIWEngineBase::callbackRemoteUser(const LMRTCRemoteUser& user, const std::string& roomId) const {
  const auto streams = user.remoteStreams();
  parseInPutStream(
      streams, [&](bool normal, const std::string& userId, const std::string& tag, std::int64_t mediaType) {
        if (!normal) {
          notify(&LMRTCIWEngineDelegate::onRemoteCustomStreamPublished, roomId, userId, tag, mediaType);
        } else if (const auto callback = listener(&LMRTCIWEngineDelegate::onRemotePublished)) {
          lumo::Console::write(
              "LMRTCIWEngine joinRoom completion remoteUsers Published: %@ userId: %@ mediaType: %zd",
              {roomId, userId, mediaType});
          (*callback)(roomId, userId, mediaType);
        }
      });
  for (const auto& stream : streams) {
    if (stream) callbackStreamState(*stream, roomId);
  }
}

void LMRTCIWEngineBase::callbackStreamState(const LMRTCInputStream& stream, const std::string& roomId) const {
  const std::int64_t mediaType = stream.mediaType();
  const bool audioOrVideo = mediaType == LMRTCMediaTypeAudio || mediaType == LMRTCMediaTypeVideo;
  const bool disabled = stream.resourceState() == LMRTCResourceStateDisabled;
  const std::string& userId = stream.userId();
  if (stream.mediaStreamType() == LMRTCMediaStreamTypeNormal) {
    const auto callback = listener(&LMRTCIWEngineDelegate::onRemoteStateChanged);
    if (!callback) return;
    lumo::Console::write(
        "LMRTCIWEngine joinRoom completion remoteUsers State Changed: %@ userId: %@ mediaType: %zd disabled: "
        "%d",
        {roomId, userId, mediaType, disabled});
    if (audioOrVideo) (*callback)(roomId, userId, mediaType, disabled);
  } else if (stream.mediaStreamType() != LMRTCMediaStreamTypeLive && audioOrVideo) {
    const auto callback = listener(&LMRTCIWEngineDelegate::onRemoteCustomStreamStateChanged);
    if (!callback) return;
    lumo::Console::write(
        "LMRTCIWEngine joinRoom completion remoteUsers Custom Stream State Changed: %@ userId: %@ tag: %@ "
        "disabled: "
        "%d",
        {roomId, userId, stream.tag(), disabled});
    (*callback)(roomId, userId, stream.tag(), mediaType, disabled);
  }
}
