#include <utility>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/engine/SdkVideoConfig.h"
#include "LumoRTCLibWrapper/engine/StreamList.h"
#include "LumoRTCLibWrapper/engine/StreamSelection.h"
#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

// Media streams: configuration, publishing, subscribing.

namespace {

using Streams = std::vector<std::shared_ptr<LMRTCInputStream>>;

/// What the log shows of an absent config.
constexpr LMRTCIWAudioConfig kNoAudioConfig{.quality = 0, .scenario = 0, .recordingVolume = 0};

bool includesAudio(std::int64_t mediaType) {
  return mediaType == LMRTCIWMediaTypeAudio || mediaType == LMRTCIWMediaTypeAudioVideo;
}

bool includesVideo(std::int64_t mediaType) {
  return mediaType == LMRTCIWMediaTypeVideo || mediaType == LMRTCIWMediaTypeAudioVideo;
}

/// The live mix's streams that the host asked for; an unknown number asks for all.
Streams liveStreams(const LMRTCRoom& room, std::int64_t mediaType) {
  auto streams = room.getLiveStreams();
  if (mediaType == LMRTCIWMediaTypeAudio || mediaType == LMRTCIWMediaTypeVideo) {
    std::erase_if(streams, [mediaType](const auto& stream) { return stream->mediaType() != mediaType; });
  }
  return streams;
}

void subscribeTo(LMRTCLocalUser& localUser, const Streams& streams, bool tiny,
                 LMRTCLocalUser::Completion done) {
  if (tiny) {
    localUser.subscribeStream(std::nullopt, streams, std::move(done));
  } else {
    localUser.subscribeStream(streams, std::nullopt, std::move(done));
  }
}

}  // namespace

std::int64_t LMRTCIWEngine::setAudioConfig(const LMRTCIWAudioConfig* config) {
  const LMRTCIWAudioConfig& values = config ? *config : kNoAudioConfig;
  const CallFrame frame(__func__, "quality:%@,scenario:%@,recordingVolume:%@",
                        {values.quality, values.scenario, values.recordingVolume});
  if (!config) return frame.fail(LMRTCWrapperCodeParameterError, "config is nil");

  if (const auto audio = defaultAudioStream()) {
    audio->setAudioQuality(LMRTCIWConverter::toLMRTCAudioQuality(values.quality),
                           LMRTCIWConverter::toLMRTCAudioScenario(values.scenario));
    audio->setRecordingVolume(values.recordingVolume);
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setVideoConfig(const LMRTCIWVideoConfig* config) {
  const LMRTCIWVideoConfig& values = config ? *config : lumo::kNoVideoConfig;
  const CallFrame frame(__func__, "minBitrate:%@,maxBitrate:%@,fps:%@,resolution:%@,mirror:%@",
                        {values.minBitrate, values.maxBitrate, values.fps, values.resolution, values.mirror});
  return setVideoConfig(config, false);
}

std::int64_t LMRTCIWEngine::setVideoConfig(const LMRTCIWVideoConfig* config, bool tiny) {
  const LMRTCIWVideoConfig& values = config ? *config : lumo::kNoVideoConfig;
  const CallFrame frame(
      __func__, "minBitrate:%@,maxBitrate:%@,fps:%@,resolution:%@,mirror:%@,tiny:%@",
      {values.minBitrate, values.maxBitrate, values.fps, values.resolution, values.mirror, tiny});
  // The other operation's name is kept for hosts.
  if (!config) return CallFrame::failAs("setAudioConfig", LMRTCWrapperCodeParameterError, "config is nil");

  const auto video = defaultVideoStream();
  if (!video) return LMRTCWrapperCodeSuccess;
  if (tiny) {
    video->setTinyVideoConfig(lumo::sdkVideoConfig(values));
  } else {
    video->setVideoConfig(lumo::sdkVideoConfig(values));
    video->setIsEncoderMirror(values.mirror);
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::publish(std::int64_t mediaType) {
  const CallFrame frame(__func__, "type:%@", {mediaType});
  const auto joined = joinedRoom();
  const auto setup = iwRoomSetup();
  if (!joined || !setup) {
    return frame.fail(LMRTCWrapperCodeLocalUserNotJoined,
                      "room is nil or localUser is nil or iwRoomSetup is nil");
  }
  prepareDefaultStreams(mediaType);  // before the role is looked at: hosts rely on it
  const auto streams = defaultStreams(mediaType);
  if (streams.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "streamArray count is 0");

  if (setup->role == LMRTCIWRoleLiveBroadcaster)
    return publishLive(frame, *joined.localUser, mediaType, streams);
  if (setup->role != LMRTCIWRoleMeetingMember) return LMRTCWrapperCodeParameterError;
  joined.localUser->publishStreams(
      streams, [self = shared_from_this(), frame, mediaType](bool, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, role:%@", {"onPublished", code, LMRTCIWRoleMeetingMember});
        self->notify(&LMRTCIWEngineDelegate::onPublished, mediaType, code, LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unpublish(std::int64_t mediaType) {
  const CallFrame frame(__func__, "type:%@", {mediaType});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto streams = defaultStreams(mediaType);
  if (streams.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "streamArray count is 0");

  const auto setup = iwRoomSetup();
  const std::int64_t role = setup ? setup->role : LMRTCIWRoleMeetingMember;
  if (role == LMRTCIWRoleLiveBroadcaster) return unpublishLive(frame, *joined.localUser, mediaType, streams);
  if (role != LMRTCIWRoleMeetingMember) return LMRTCWrapperCodeParameterError;
  joined.localUser->unpublishStreams(streams, [self = shared_from_this(), frame, mediaType](
                                                  bool, std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, role:%@", {"onUnpublished", code, LMRTCIWRoleMeetingMember});
    self->notify(&LMRTCIWEngineDelegate::onUnpublished, mediaType, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::publishLive(const CallFrame& frame, LMRTCLocalUser& localUser,
                                        std::int64_t mediaType, const OutputStreams& streams) {
  auto done = [self = shared_from_this(), frame, mediaType](bool, std::int64_t code,
                                                            const std::shared_ptr<LMRTCLiveInfo>& liveInfo) {
    self->keepLiveInfo(liveInfo);
    frame.result(code, "callback:%@, code:%@, role:%@,type:%@",
                 {"onPublished", code, LMRTCIWRoleLiveBroadcaster, mediaType});
    self->notify(&LMRTCIWEngineDelegate::onPublished, mediaType, code, LMRTCCodeDefine::codeDesc(code));
  };
  if (mediaType == LMRTCIWMediaTypeAudioVideo) {
    localUser.publishDefaultLiveStreams(std::move(done));
  } else {
    localUser.publishLiveStream(streams.front(), std::move(done));
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unpublishLive(const CallFrame& frame, LMRTCLocalUser& localUser,
                                          std::int64_t mediaType, const OutputStreams& streams) {
  auto done = [self = shared_from_this(), frame, mediaType](bool, std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, role:%@,type:%@",
                 {"onUnpublished", code, LMRTCIWRoleLiveBroadcaster, mediaType});
    self->notify(&LMRTCIWEngineDelegate::onUnpublished, mediaType, code, LMRTCCodeDefine::codeDesc(code));
  };
  if (mediaType == LMRTCIWMediaTypeAudioVideo) {
    localUser.unpublishDefaultLiveStreams(std::move(done));
  } else {
    localUser.unpublishLiveStream(streams.front(), std::move(done));
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::subscribe(const OptionalText& userId, std::int64_t mediaType) {
  const CallFrame frame(__func__, "userId:%@,type:%@", {userId, mediaType});
  return subscribe(userId, mediaType, false);
}

std::int64_t LMRTCIWEngine::subscribe(const OptionalText& userId, std::int64_t mediaType, bool tiny) {
  const CallFrame frame(__func__, "userId:%@,type:%@,tiny:%@", {userId, mediaType, tiny});
  // The other operation's name is kept for hosts.
  if (!userId) return CallFrame::failAs("unpublish", LMRTCWrapperCodeParameterError, "userId is nil");
  return subscribeWithUserIds({*userId}, mediaType, tiny);
}

std::int64_t LMRTCIWEngine::subscribeWithUserIds(const UserIds& userIds, std::int64_t mediaType) {
  const CallFrame frame(__func__, "userIdArray:%@,type:%@", {userIds, mediaType});
  return subscribeWithUserIds(userIds, mediaType, false);
}

std::int64_t LMRTCIWEngine::subscribeWithUserIds(const UserIds& userIds, std::int64_t mediaType, bool tiny) {
  const CallFrame frame(__func__, "userIdArray:%@,type:%@,tiny:%@", {userIds, mediaType, tiny});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto streams = ordinaryStreams(userIds, mediaType);
  if (streams.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "streams count is 0");

  subscribeTo(*joined.localUser, streams, tiny,
              [self = shared_from_this(), frame, userIds, mediaType, tiny](bool, std::int64_t code) {
                frame.result(code, "callback:%@, code:%@, userIdArray:%@,type:%@,tiny:%@",
                             {"onSubscribed", code, userIds, mediaType, tiny});
                const auto message = LMRTCCodeDefine::codeDesc(code);
                for (const auto& userId : userIds) {
                  self->notify(&LMRTCIWEngineDelegate::onSubscribed, userId, mediaType, code, message);
                }
              });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unsubscribe(const OptionalText& userId, std::int64_t mediaType) {
  const CallFrame frame(__func__, "userId:%@,type:%@", {userId, mediaType});
  if (!userId) return frame.fail(LMRTCWrapperCodeParameterError, "userId is nil");
  return unsubscribeWithUserIds({*userId}, mediaType);
}

std::int64_t LMRTCIWEngine::unsubscribeWithUserIds(const UserIds& userIds, std::int64_t mediaType) {
  const CallFrame frame(__func__, "userIdArray:%@,type:%@", {userIds, mediaType});
  const auto joined = joinedRoom();
  if (!joined || userIds.empty()) {
    return frame.fail(LMRTCWrapperCodeLocalUserNotJoined,
                      "room is nil or localUser is nil or userIdArray count is 0");
  }
  const auto streams = ordinaryStreams(userIds, mediaType);
  if (streams.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "streams count is 0");

  joined.localUser->unsubscribeStreams(
      streams, [self = shared_from_this(), frame, userIds, mediaType](bool, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, userIdArray:%@,type:%@",
                     {"onUnsubscribed", code, userIds, mediaType});
        const auto message = LMRTCCodeDefine::codeDesc(code);
        for (const auto& userId : userIds) {
          self->notify(&LMRTCIWEngineDelegate::onUnsubscribed, userId, mediaType, code, message);
        }
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::subscribeLiveMix(std::int64_t mediaType) {
  const CallFrame frame(__func__, "type:%@", {mediaType});
  return subscribeLiveMix(mediaType, false);
}

std::int64_t LMRTCIWEngine::subscribeLiveMix(std::int64_t mediaType, bool tiny) {
  const CallFrame frame(__func__, "type:%@,tiny:%@", {mediaType, tiny});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto streams = liveStreams(*joined.room, mediaType);
  if (streams.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "streamArray count is 0");

  subscribeTo(*joined.localUser, streams, tiny,
              [self = shared_from_this(), frame, mediaType, tiny](bool, std::int64_t code) {
                frame.result(code, "callback:%@, code:%@, type:%@,tiny:%@",
                             {"onLiveMixSubscribed", code, mediaType, tiny});
                self->notify(&LMRTCIWEngineDelegate::onLiveMixSubscribed, mediaType, code,
                             LMRTCCodeDefine::codeDesc(code));
              });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unsubscribeLiveMix(std::int64_t mediaType) {
  const CallFrame frame(__func__, "type:%@", {mediaType});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto streams = liveStreams(*joined.room, mediaType);
  if (streams.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "streamArray count is 0");

  joined.localUser->unsubscribeStreams(
      streams, [self = shared_from_this(), frame, mediaType, streams](bool, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, type:%@,streamArray:%@",
                     {"onLiveMixUnsubscribed", code, mediaType, lumo::StreamList{streams}});
        self->notify(&LMRTCIWEngineDelegate::onLiveMixUnsubscribed, mediaType, code,
                     LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::shared_ptr<LMRTCAudioOutputStream> LMRTCIWEngineBase::defaultAudioStream() const {
  const auto engine = rtcEngine();
  return engine ? engine->defaultAudioStream() : nullptr;
}

std::shared_ptr<LMRTCCameraVideoOutputStream> LMRTCIWEngineBase::defaultVideoStream() const {
  const auto engine = rtcEngine();
  return engine ? engine->defaultVideoStream() : nullptr;
}

void LMRTCIWEngineBase::prepareDefaultStreams(std::int64_t mediaType) const {
  const auto setup = iwEngineSetup();
  if (const auto audio = defaultAudioStream(); audio && includesAudio(mediaType)) {
    const std::int64_t codec = setup && setup->audioSetup ? setup->audioSetup->type : 0;
    audio->setAudioCodecType(LMRTCIWConverter::toLMRTCAudioCodecType(codec));
  }
  if (const auto video = defaultVideoStream(); video && includesVideo(mediaType)) {
    video->setEnableTinyStream(setup && setup->videoSetup && setup->videoSetup->enableTinyStream);
  }
}

LMRTCIWEngineBase::OutputStreams LMRTCIWEngineBase::defaultStreams(std::int64_t mediaType) const {
  OutputStreams streams;
  if (auto audio = defaultAudioStream(); audio && includesAudio(mediaType))
    streams.push_back(std::move(audio));
  if (auto video = defaultVideoStream(); video && includesVideo(mediaType))
    streams.push_back(std::move(video));
  return streams;
}

LMRTCIWEngine::InputStreams LMRTCIWEngine::ordinaryStreams(const UserIds& userIds, std::int64_t mediaType) {
  InputStreams wanted;
  for (const auto& userId : userIds) {
    const auto user = getRemoteUser(userId);
    if (!user) continue;
    for (auto& stream : user->remoteStreams()) {
      if (stream->mediaStreamType() == LMRTCMediaStreamTypeNormal && lumo::isWanted(*stream, mediaType)) {
        wanted.push_back(std::move(stream));
      }
    }
  }
  return wanted;
}
