#include "LumoRTCLocal/sdk/LocalEngine.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/FileUrl.h"
#include "LumoRTCLocal/media/VideoPresets.h"
#include "LumoRTCLocal/sdk/LocalFileStream.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

LocalEngine::LocalEngine(std::shared_ptr<const LocalContext> context, std::shared_ptr<CameraPipeline> camera,
                         std::shared_ptr<CameraPair> cameras, std::unique_ptr<AudioSource> microphone)
    : context_(std::move(context)),
      pipeline_(std::move(camera)),
      microphone_(std::make_shared<LocalMicrophone>(context_->userId, std::move(microphone), context_->server,
                                                    context_->audio, context_->files)),
      camera_(
          std::make_shared<LocalCamera>(context_->userId, pipeline_, std::move(cameras), context_->server)),
      mixer_(std::make_shared<LocalAudioMixer>(context_->sdk, context_->decoding, context_->files)),
      effects_(std::make_shared<LocalAudioEffectManager>(context_->decoding, context_->files)),
      reporter_(std::make_shared<StatusReporter>(context_)),
      probe_(std::make_shared<NetworkProbe>(context_)),
      setup_(context_->connection) {}

LocalEngine::~LocalEngine() { unInit(); }

void LocalEngine::setDelegate(std::weak_ptr<LMRTCEngineEventDelegate> delegate) {
  delegate_.set(std::move(delegate));
}

void LocalEngine::setMediaServerUrl(const std::string& /*url*/) {}

void LocalEngine::setStatusReportDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate) {
  reporter_->setDelegate(std::move(delegate));
}

void LocalEngine::initWithConfig(const LMRTCConfig& config) {
  reporter_->setInterval(config.statusReportInterval());
  context_->operations->begin();
  context_->renderGate->open();
  microphone_->setActive(true);
  pipeline_->setActive(true);
}

void LocalEngine::unInit() {
  mixer_->stop();
  effects_->stopAllEffects();
  std::shared_ptr<LocalRoom> room;
  {
    const std::lock_guard lock(mutex_);
    if (!context_->operations->end()) return;
    room = std::exchange(room_, nullptr);
  }
  if (room) close(room);
  microphone_->setActive(false);
  context_->speaker->setEnabled(true);
  pipeline_->setActive(false);
  camera_->reset();
  delegate_.set({});
  reporter_->setDelegate({});
  setup_.disconnect();
  context_->sdk->post([weak = std::weak_ptr(probe_)] {
    if (const auto probe = weak.lock()) probe->interrupt();
  });
  context_->renderGate->close();
}

void LocalEngine::joinRoom(const std::string& roomId, const LMRTCRoomConfig& config,
                           JoinCompletion completion) {
  const auto enter = [weak = weak_from_this(), roomId, config,
                      completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    std::shared_ptr<LocalRoom> room;
    const auto self = weak.lock();
    if (code == LocalCodeSuccess)
      code = self ? self->enterRoom(roomId, config, room) : LocalCodeNotInitialised;
    if (completion) completion(code, room);
  };
  context_->operations->run("joinRoom", enter, setup_.takeForJoin(context_->timeline->now()));
}

void LocalEngine::leaveRoom(Completion completion) {
  context_->operations->run(
      "leaveRoom", [weak = weak_from_this(), completion = std::move(completion)](std::int64_t refusal) {
        std::int64_t code = refusal;
        const auto self = weak.lock();
        if (code == LocalCodeSuccess) code = self ? self->exitRoom() : LocalCodeNotInitialised;
        if (completion) completion(code);
      });
}

void LocalEngine::joinOtherRoom(const std::string& roomId, JoinOtherCompletion completion) {
  context_->operations->run("joinOtherRoom", [weak = weak_from_this(), roomId,
                                              completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    std::shared_ptr<LocalOtherRoom> joined;
    const auto self = weak.lock();
    const auto room = self ? self->mainRoom() : nullptr;
    if (code == LocalCodeSuccess) code = room ? room->otherRooms().join(roomId, joined) : LocalCodeNotInRoom;
    if (completion) completion(code, joined);
  });
}

void LocalEngine::leaveOtherRoom(const std::string& roomId, bool notifyFinished,
                                 LeaveOtherCompletion completion) {
  context_->operations->run("leaveOtherRoom", [weak = weak_from_this(), roomId, notifyFinished,
                                               completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    const auto self = weak.lock();
    const auto room = self ? self->mainRoom() : nullptr;
    if (code == LocalCodeSuccess)
      code = room ? room->otherRooms().leave(roomId, notifyFinished) : LocalCodeNotInRoom;
    if (completion) completion(code == LocalCodeSuccess, code);
  });
}

std::shared_ptr<LMRTCFileVideoOutputStream> LocalEngine::createFileVideoOutputStream(
    const std::string& url, bool replaceAudio, bool playback, const std::string& tag,
    const LMRTCVideoStreamConfig& config) {
  if (tag == kLMRTCDefaultStreamTag) return nullptr;
  return std::make_shared<LocalFileStream>(
      context_, LocalFileStream::Settings{pathOfUrl(url), tag, replaceAudio, playback,
                                          configuredFormat(VideoFormat(), config)});
}

void LocalEngine::startEchoTest(double seconds) {
  microphone_->setEchoTest(std::make_shared<EchoTest>(context_->speaker, seconds));
}

void LocalEngine::setProbeTestDelegate(std::weak_ptr<LMRTCProbeTestDelegate> delegate) {
  probe_->setDelegate(std::move(delegate));
}

void LocalEngine::startRTCProbeTest(Completion completion) {
  context_->operations->run("startRTCProbeTest", [weak = weak_from_this(),
                                                  completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    if (const auto self = weak.lock(); self && code == LocalCodeSuccess)
      code = self->mainRoom() ? std::int64_t{LocalCodeAlreadyInRoom} : self->probe_->start();
    if (completion) completion(code);
  });
}

void LocalEngine::stopRTCProbeTest(Completion completion) {
  context_->operations->run("stopRTCProbeTest", [weak = weak_from_this(),
                                                 completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    if (const auto self = weak.lock(); self && code == LocalCodeSuccess) code = self->probe_->interrupt();
    if (completion) completion(code);
  });
}

void LocalEngine::preconnectMediaServer() {
  if (context_->operations->session() != 0) setup_.connectAhead(context_->timeline->now());
}

std::int64_t LocalEngine::enterRoom(const std::string& roomId, const LMRTCRoomConfig& config,
                                    std::shared_ptr<LocalRoom>& joined) {
  const std::uint64_t session = context_->operations->session();
  {
    const std::lock_guard lock(mutex_);
    if (room_) return LocalCodeAlreadyInRoom;
  }
  const auto otherRooms = std::make_shared<LocalOtherRooms>(
      context_, [weak = weak_from_this()]() -> std::shared_ptr<LMRTCEngineEventDelegate> {
        const auto self = weak.lock();
        return self ? self->delegate_.get() : nullptr;
      });
  const auto room = std::make_shared<LocalRoom>(
      context_, roomId, otherRooms,
      [weak = weak_from_this()](const std::shared_ptr<LocalRoom>& left, std::optional<std::int64_t> reason) {
        if (const auto self = weak.lock()) self->roomKicked(left, reason);
      });
  const auto result =
      context_->server->join({roomId, context_->userId, config.roomType().value_or(LMRTCRoomTypeNormal),
                              config.roleType().value_or(LMRTCRoleTypeBroadcaster),
                              config.joinRoomType() == LMRTCJoinRoomTypeExclusive, room, otherRooms,
                              config.liveType().value_or(LMRTCLiveTypeAudioVideo), context_->connection});
  if (result.code != LocalCodeSuccess) return result.code;
  stopEchoTest();
  room->enter(result, {microphone_, camera_});
  context_->audio->addListener(context_->speaker);
  {
    const std::lock_guard lock(mutex_);
    if (session != 0 && session == context_->operations->session()) {
      room_ = room;
      joined = room;
    }
  }
  if (joined) {
    probe_->interrupt();
    reporter_->start(room);
    return LocalCodeSuccess;
  }
  close(room);  // un-initialised while it joined
  return LocalCodeNotInitialised;
}

std::int64_t LocalEngine::exitRoom() {
  std::shared_ptr<LocalRoom> room;
  {
    const std::lock_guard lock(mutex_);
    room = std::exchange(room_, nullptr);
  }
  if (!room) return LocalCodeNotInRoom;
  close(room);
  return LocalCodeSuccess;
}

std::shared_ptr<LocalRoom> LocalEngine::mainRoom() {
  const std::lock_guard lock(mutex_);
  return room_;
}

void LocalEngine::roomKicked(const std::shared_ptr<LocalRoom>& room, std::optional<std::int64_t> reason) {
  if (const auto delegate = delegate_.get(); delegate && reason) delegate->didKicked(room->roomId(), *reason);
  {
    const std::lock_guard lock(mutex_);
    if (room_ != room) return;  // the delegate has un-initialised the engine
    room_ = nullptr;
  }
  close(room);
}

void LocalEngine::close(const std::shared_ptr<LocalRoom>& room) {
  room->close();
  context_->audio->removeListener(context_->speaker);
}

}  // namespace lumo
