#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioEffectManager.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOtherRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStatusReport.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"

/// A media SDK that does next to nothing, so that what is measured in front of it is the engine. Its
/// completions come inside the call.
namespace lumo::tiny {

/// What both kinds of streams tell about themselves.
template <class Base>
class Stream : public Base {
 public:
  Stream(const std::string& userId, std::int64_t mediaType) : userId_(userId), mediaType_(mediaType) {}

  const std::string& streamId() const override { return streamId_; }
  const std::string& userId() const override { return userId_; }
  const std::string& tag() const override { return tag_; }
  std::int64_t mediaType() const override { return mediaType_; }
  std::int64_t mediaStreamType() const override { return LMRTCMediaStreamTypeNormal; }
  void setIsMute(bool mute) override { isMute_ = mute; }
  bool isMute() const override { return isMute_; }

 private:
  const std::string userId_;
  const std::string tag_ = kLMRTCDefaultStreamTag;
  const std::string streamId_ = userId_ + "_" + tag_;
  const std::int64_t mediaType_;
  bool isMute_ = false;
};

class Microphone : public Stream<LMRTCAudioOutputStream> {
 public:
  Microphone() : Stream("me", LMRTCMediaTypeAudio) {}

  void setAudioQuality(std::int64_t quality, std::int64_t scenario) override {
    quality_ = quality;
    scenario_ = scenario;
  }
  void setRecordingVolume(std::uint64_t volume) override { volume_ = volume; }
  void setAudioCodecType(std::int64_t) override {}
  void setMicrophoneDisable(bool) override {}
  void setRecordAudioDataCallback(LMRTCAudioDataCallback callback) override {
    recorded_ = std::move(callback);
  }
  void setWillSendAudioBufferCallback(LMRTCAudioDataCallback) override {}

  /// Who hears what is captured.
  const LMRTCAudioDataCallback& recorded() const { return recorded_; }

 private:
  LMRTCAudioDataCallback recorded_;
  std::int64_t quality_ = 0;
  std::int64_t scenario_ = 0;
  std::uint64_t volume_ = 0;
};

template <class Base>
class Input : public Stream<Base> {
 public:
  using Stream<Base>::Stream;
  std::int64_t resourceState() const override { return LMRTCResourceStateNormal; }
  void setAudioDataCallback(LMRTCAudioDataCallback) override {}
};

class RemoteUser : public LMRTCRemoteUser {
 public:
  explicit RemoteUser(const std::string& userId)
      : userId_(userId),
        streams_{std::make_shared<Input<LMRTCAudioInputStream>>(userId, LMRTCMediaTypeAudio),
                 std::make_shared<Input<LMRTCInputStream>>(userId, LMRTCMediaTypeVideo)} {}

  std::optional<std::string> userId() const override { return userId_; }
  std::vector<std::shared_ptr<LMRTCInputStream>> remoteStreams() const override { return streams_; }

 private:
  const std::string userId_;
  const std::vector<std::shared_ptr<LMRTCInputStream>> streams_;
};

/// There, so that events count; its operations do nothing.
class LocalUser : public LMRTCLocalUser {
 public:
  using Stream = std::shared_ptr<LMRTCOutputStream>;

  const std::string& userId() const override { return userId_; }
  OutputStreams streams() const override { return {}; }
  void publishStreams(const OutputStreams&, Completion) override {}
  void unpublishStreams(const OutputStreams&, Completion) override {}
  void publishStream(const Stream&, Completion) override {}
  void unpublishStream(const Stream&, Completion) override {}
  void publishLiveStream(const Stream&, LiveCompletion) override {}
  void publishDefaultLiveStreams(LiveCompletion) override {}
  void unpublishLiveStream(const Stream&, Completion) override {}
  void unpublishDefaultLiveStreams(Completion) override {}
  void switchToBroadcaster(const LMRTCMixConfig*, BecameBroadcaster, Failed, Kicked) override {}
  void switchToAudienceOnSucceed(std::function<void()>, Failed, Kicked) override {}
  void subscribeStream(const std::optional<InputStreams>&, const std::optional<InputStreams>&,
                       Completion) override {}
  void unsubscribeStreams(const InputStreams&, Completion) override {}
  void requestJoinOtherRoom(const std::string&, const std::string&, bool, const std::string&,
                            CodeCompletion) override {}
  void cancelRequestJoinOtherRoom(const std::string&, const std::string&, const std::string&,
                                  CodeCompletion) override {}
  void responseJoinOtherRoom(const std::string&, const std::string&, bool, bool, const std::string&,
                             CodeCompletion) override {}
  void setEnableSEI(bool, CodeCompletion) override {}
  std::int64_t sendSEI(const std::string&) override { return 0; }

 private:
  const std::string userId_ = "me";
};

/// The id of a user, which has the same length for all up to 900,000.
inline std::string userId(std::int64_t number) { return "user-" + std::to_string(100'000 + number); }

/// What both kinds of rooms have: users with a microphone and a camera each.
template <class Base>
class UsersOf : public Base {
 public:
  /// @param firstUser  the number of the first one
  UsersOf(std::string roomId, std::int64_t firstUser, std::int64_t userCount) : roomId_(std::move(roomId)) {
    for (std::int64_t i = 0; i < userCount; ++i) {
      users_.push_back(std::make_shared<RemoteUser>(tiny::userId(firstUser + i)));
      usersById_.emplace(tiny::userId(firstUser + i), users_.back());
    }
  }

  const std::string& roomId() const override { return roomId_; }
  std::vector<std::shared_ptr<LMRTCRemoteUser>> remoteUsers() const override { return users_; }
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(const std::string& userId) const override {
    const auto place = usersById_.find(userId);
    return place == usersById_.end() ? nullptr : place->second;
  }

 private:
  const std::string roomId_;
  std::vector<std::shared_ptr<LMRTCRemoteUser>> users_;
  std::unordered_map<std::string, std::shared_ptr<LMRTCRemoteUser>> usersById_;
};

class Room : public UsersOf<LMRTCRoom> {
 public:
  explicit Room(std::int64_t userCount) : UsersOf("room", 0, userCount) {}

  std::shared_ptr<LMRTCRoomEventDelegate> events() const { return delegate_.lock(); }

  void setDelegate(std::weak_ptr<LMRTCRoomEventDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }
  std::string sessionId() const override { return {}; }
  std::shared_ptr<LMRTCLocalUser> localUser() const override { return localUser_; }
  std::vector<std::string> otherRoomIdArray() const override { return {}; }
  void muteAllRemoteAudio(bool) override {}
  void setReceivedAudioBufferCallback(LMRTCAudioDataCallback) override {}
  std::vector<std::shared_ptr<LMRTCInputStream>> getLiveStreams() const override { return {}; }
  std::shared_ptr<LMRTCCDNInputStream> getCDNStream() const override { return nullptr; }

 private:
  const std::shared_ptr<LocalUser> localUser_ = std::make_shared<LocalUser>();
  std::weak_ptr<LMRTCRoomEventDelegate> delegate_;
};

class OtherRoom : public UsersOf<LMRTCOtherRoom> {
 public:
  using UsersOf::UsersOf;
  void setDelegate(std::weak_ptr<LMRTCOtherRoomEventDelegate>) override {}
};

class Engine : public LMRTCEngine {
 public:
  /// What `joinRoom` answers with.
  std::shared_ptr<Room> room;
  /// What `joinOtherRoom` answers with.
  std::unordered_map<std::string, std::shared_ptr<OtherRoom>> otherRooms;

  std::shared_ptr<LMRTCStatusReportDelegate> reports() const { return reports_.lock(); }

  void setDelegate(std::weak_ptr<LMRTCEngineEventDelegate>) override {}
  void setStatusReportDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate) override {
    reports_ = std::move(delegate);
  }
  void setMediaServerUrl(const std::string&) override {}
  void initWithConfig(const LMRTCConfig&) override {}
  void unInit() override {}
  void joinRoom(const std::string&, const LMRTCRoomConfig&, JoinCompletion completion) override {
    completion(0, room);
  }
  void leaveRoom(Completion) override {}
  void joinOtherRoom(const std::string& roomId, JoinOtherCompletion completion) override {
    completion(0, otherRooms.at(roomId));
  }
  void leaveOtherRoom(const std::string&, bool, LeaveOtherCompletion) override {}
  std::shared_ptr<LMRTCFileVideoOutputStream> createFileVideoOutputStream(
      const std::string&, bool, bool, const std::string&, const LMRTCVideoStreamConfig&) override {
    return nullptr;
  }
  std::shared_ptr<LMRTCAudioEffectManager> audioEffectManager() const override { return nullptr; }
  void startEchoTest(double) override {}
  void stopEchoTest() override {}
  void setProbeTestDelegate(std::weak_ptr<LMRTCProbeTestDelegate>) override {}
  void startRTCProbeTest(Completion) override {}
  void stopRTCProbeTest(Completion) override {}
  void preconnectMediaServer() override {}
  void enableSpeaker(bool) override {}
  std::shared_ptr<Microphone> microphone() const { return microphone_; }
  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const override { return microphone_; }
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const override { return nullptr; }

 private:
  const std::shared_ptr<Microphone> microphone_ = std::make_shared<Microphone>();
  std::weak_ptr<LMRTCStatusReportDelegate> reports_;
};

class Provider : public LMRTCProvider {
 public:
  const std::shared_ptr<Engine> engine = std::make_shared<Engine>();

  std::shared_ptr<LMRTCEngine> sharedEngine() override { return engine; }
  std::shared_ptr<LMRTCAudioMixer> sharedAudioMixer() override { return nullptr; }
  double durationOfAudioFile(const std::string&) override { return 0; }
  std::string codeDesc(std::int64_t) override { return {}; }
  std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect&) override { return nullptr; }
  void i420Rotate(const std::uint8_t*, std::int32_t, const std::uint8_t*, std::int32_t, const std::uint8_t*,
                  std::int32_t, std::uint8_t*, std::int32_t, std::uint8_t*, std::int32_t, std::uint8_t*,
                  std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {}
  void i420ToARGB(const std::uint8_t*, std::int32_t, const std::uint8_t*, std::int32_t, const std::uint8_t*,
                  std::int32_t, std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override {}
};

/// An engine on this SDK, for as long as the object lives. Console and log are silent.
class Call {
 public:
  Call() {
    Console::setSink({});
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    LMRTCProvider::install(provider);
    engine = LMRTCIWEngine::create();
  }
  ~Call() {
    engine->destroy();
    LMRTCProvider::install(nullptr);
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  const std::shared_ptr<Provider> provider = std::make_shared<Provider>();
  std::shared_ptr<LMRTCIWEngine> engine;
};

}  // namespace lumo::tiny
