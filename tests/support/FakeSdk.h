#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioEffectManager.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOtherRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProbeTest.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStatusReport.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoInputStreamDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLibWrapper/platform/system/CMSampleBuffer.h"
#include "LumoRTCLibWrapper/platform/system/UIImage.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"
#include "tests/support/Trace.h"

namespace lumo::fake {

/// Counts the fakes that are alive, so that a test can tell that nothing holds one any more.
class Counted {
 public:
  static int alive() { return count().load(); }

 protected:
  Counted() { ++count(); }
  Counted(const Counted&) { ++count(); }
  ~Counted() { --count(); }

 private:
  static std::atomic<int>& count() {
    static std::atomic<int> alive{0};
    return alive;
  }
};

/// What all fakes of one test share: the trace, and the completions that the SDK still owes.
struct Context {
  using Completion = std::function<void(std::int64_t code)>;

  void call(std::string_view format, FormatValues values = {}) {
    trace->add("sdk " + lumo::format(format, values));
  }

  /// Writes the call down and owes its completion.
  void ask(Completion completion, std::string_view format, FormatValues values = {}) {
    call(format, values);
    owe(std::move(completion));
  }
  /// The same for completions that are told of success too.
  void ask(std::function<void(bool success, std::int64_t code)> completion, std::string_view format,
           FormatValues values = {}) {
    ask([done = std::move(completion)](std::int64_t code) { done(code == 0, code); }, format, values);
  }

  void owe(Completion completion) {
    const std::lock_guard lock(mutex);
    owed.push_back(std::move(completion));
  }

  const std::shared_ptr<Trace> trace = std::make_shared<Trace>();
  std::mutex mutex;  ///< guards `owed`
  std::deque<Completion> owed;
};
using Shared = std::shared_ptr<Context>;

struct StreamInfo {
  std::string userId;
  std::string tag = kLMRTCDefaultStreamTag;
  std::int64_t mediaType = LMRTCMediaTypeAudio;
  std::int64_t kind = LMRTCMediaStreamTypeNormal;
  std::int64_t resourceState = LMRTCResourceStateNormal;
};

template <class Base>
class Stream : public Base, Counted {
 public:
  Stream(Shared context, StreamInfo info) : context_(std::move(context)), info_(std::move(info)) {}

  const std::string& streamId() const override { return streamId_; }
  const std::string& userId() const override { return info_.userId; }
  const std::string& tag() const override { return info_.tag; }
  std::int64_t mediaType() const override { return info_.mediaType; }
  std::int64_t mediaStreamType() const override { return info_.kind; }
  void setIsMute(bool mute) override { call(mute ? "setIsMute 1" : "setIsMute 0"); }
  bool isMute() const override { return false; }

 protected:
  void call(const std::string& what) const { context_->call("%@.%@", {streamId_, what}); }
  const StreamInfo& info() const { return info_; }

 private:
  const Shared context_;
  const StreamInfo info_;
  const std::string streamId_ = info_.userId + "_" + info_.tag;
};

template <class Base>
class Input : public Stream<Base> {
 public:
  using Stream<Base>::Stream;
  std::int64_t resourceState() const override { return this->info().resourceState; }
  void setAudioDataCallback(LMRTCAudioDataCallback callback) override {
    this->call(callback ? "setAudioDataCallback hook" : "setAudioDataCallback nil");
    audioData.set(std::move(callback));
  }

  /// The installed hook; sound is delivered by calling it.
  Cell<LMRTCAudioDataCallback> audioData;
};

/// An input stream that can be shown.
template <class Base>
class VisibleInput : public Input<Base> {
 public:
  using Input<Base>::Input;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override {
    this->call(view ? "setVideoView view" : "setVideoView nil");
  }
};

using AudioInput = Input<LMRTCAudioInputStream>;

class VideoInput : public VisibleInput<LMRTCVideoInputStream> {
 public:
  using VisibleInput::VisibleInput;
  void setDelegate(std::weak_ptr<LMRTCVideoInputStreamDelegate> delegate) override {
    call(delegate.expired() ? "setDelegate nil" : "setDelegate engine");
    delegate_.set(std::move(delegate));
  }
  std::shared_ptr<LMRTCVideoInputStreamDelegate> events() const { return delegate_.get().lock(); }

 private:
  Cell<std::weak_ptr<LMRTCVideoInputStreamDelegate>> delegate_;
};

class CdnInput : public VisibleInput<LMRTCCDNInputStream> {
 public:
  CdnInput(Shared context, StreamInfo info)
      : VisibleInput(context, std::move(info)), context_(std::move(context)) {}
  void setVideoConfig(std::int64_t preset, std::int64_t fpsValue, Completion done) override {
    call(lumo::format("setVideoConfig %@ %@", {preset, fpsValue}));
    context_->owe([done = std::move(done)](std::int64_t code) { done(code == 0, code); });
  }

 private:
  const Shared context_;
};
/// Says that it is of some media type, without being a stream class of the SDK.
using OddInput = Input<LMRTCInputStream>;

class Microphone : public Stream<LMRTCAudioOutputStream> {
 public:
  explicit Microphone(Shared context) : Stream(std::move(context), {.userId = "me", .tag = "mic"}) {}
  void setAudioQuality(std::int64_t quality, std::int64_t scenario) override {
    call(lumo::format("setAudioQuality %@ %@", {quality, scenario}));
  }
  void setRecordingVolume(std::uint64_t volume) override {
    call(lumo::format("setRecordingVolume %@", {volume}));
  }
  void setAudioCodecType(std::int64_t type) override { call(lumo::format("setAudioCodecType %@", {type})); }
  void setMicrophoneDisable(bool disabled) override {
    call(lumo::format("setMicrophoneDisable %@", {disabled}));
  }
  void setRecordAudioDataCallback(LMRTCAudioDataCallback callback) override {
    call(callback ? "setRecordAudioDataCallback hook" : "setRecordAudioDataCallback nil");
    recorded.set(std::move(callback));
  }
  void setWillSendAudioBufferCallback(LMRTCAudioDataCallback callback) override {
    call(callback ? "setWillSendAudioBufferCallback hook" : "setWillSendAudioBufferCallback nil");
    willSend.set(std::move(callback));
  }

  Cell<LMRTCAudioDataCallback> recorded;
  Cell<LMRTCAudioDataCallback> willSend;
};

class Camera : public Stream<LMRTCCameraVideoOutputStream> {
 public:
  explicit Camera(Shared context)
      : Stream(std::move(context), {.userId = "me", .tag = "cam", .mediaType = LMRTCMediaTypeVideo}) {}
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override {
    call(view ? "setVideoView view" : "setVideoView nil");
  }
  void setVideoConfig(const LMRTCVideoStreamConfig& config) override { configure("setVideoConfig", config); }
  void setTinyVideoConfig(const LMRTCVideoStreamConfig& config) override {
    configure("setTinyVideoConfig", config);
  }
  void setEnableTinyStream(bool enabled) override { call(lumo::format("setEnableTinyStream %@", {enabled})); }
  void setIsEncoderMirror(bool mirror) override { call(lumo::format("setIsEncoderMirror %@", {mirror})); }
  void setVideoSendBufferCallback(SendBufferCallback callback) override {
    call(callback ? "setVideoSendBufferCallback hook" : "setVideoSendBufferCallback nil");
    willSend.set(std::move(callback));
  }
  void startCapture() override { call("startCapture"); }
  void stopCapture() override { call("stopCapture"); }
  void setCameraPosition(std::int64_t newPosition) override {
    call(lumo::format("setCameraPosition %@", {newPosition}));
  }
  std::int64_t cameraPosition() const override { return position; }
  void switchCamera() override { call("switchCamera"); }
  bool isCameraFocusSupported() const override { return supported; }
  bool isCameraExposurePositionSupported() const override { return supported; }
  void setCameraFocusPositionInPreview(const UIPoint& point) override {
    call(lumo::format("setCameraFocusPositionInPreview %@", {point}));
  }
  void setCameraExposurePositionInPreview(const UIPoint& point) override {
    call(lumo::format("setCameraExposurePositionInPreview %@", {point}));
  }
  void setVideoOrientation(std::int64_t orientation) override {
    call(lumo::format("setVideoOrientation %@", {orientation}));
  }
  bool setWaterMark(const std::shared_ptr<const UIImage>& image, const UIRect& p) override {
    call(lumo::format("setWaterMark %@ %@,%@ %@x%@", {image ? "image" : "nil", p.x, p.y, p.width, p.height}));
    return supported;
  }

  std::atomic<std::int64_t> position = LMRTCDeviceCameraFront;
  std::atomic<bool> supported = true;  ///< what questions and the watermark are answered with
  Cell<SendBufferCallback> willSend;

 private:
  void configure(std::string_view name, const LMRTCVideoStreamConfig& c) {
    call(lumo::format("%@ %@-%@ fps %@ size %@",
                      {name, c.minBitrate(), c.maxBitrate(), c.videoFps(), c.videoSizePreset()}));
  }
};

/// A file stream, as a custom stream of the local user.
class FileOutput : public Stream<LMRTCFileVideoOutputStream> {
 public:
  FileOutput(Shared context, std::string tag)
      : Stream(std::move(context), {.userId = "me",
                                    .tag = std::move(tag),
                                    .mediaType = LMRTCMediaTypeVideo,
                                    .kind = LMRTCMediaStreamTypeCustom}) {}
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>&) override { call("setVideoView"); }
  void setVideoConfig(const LMRTCVideoStreamConfig&) override { call("setVideoConfig"); }
  void setVideoSendBufferCallback(SendBufferCallback callback) override {
    call(callback ? "setVideoSendBufferCallback hook" : "setVideoSendBufferCallback nil");
    willSend.set(std::move(callback));
  }
  void setDelegate(std::weak_ptr<LMRTCFileVideoOutputStreamDelegate> delegate) override {
    call(delegate.expired() ? "setDelegate nil" : "setDelegate engine");
    delegate_.set(std::move(delegate));
  }
  std::shared_ptr<LMRTCFileVideoOutputStreamDelegate> events() const { return delegate_.get().lock(); }
  void stop() override { call("stop"); }

  Cell<SendBufferCallback> willSend;

 private:
  Cell<std::weak_ptr<LMRTCFileVideoOutputStreamDelegate>> delegate_;
};

class LiveInfo : public LMRTCLiveInfo, Counted {
 public:
  explicit LiveInfo(Shared context) : context_(std::move(context)) {}

  void setMixConfig(const LMRTCMixConfig& config, Completion done) override {
    context_->ask(std::move(done), "setMixConfig%@", {text(config)});
  }
  void addPublishStreamUrl(const std::string& url, Completion done) override {
    context_->ask(std::move(done), "addPublishStreamUrl %@", {url});
  }
  void removePublishStreamUrl(const std::string& url, Completion done) override {
    context_->ask(std::move(done), "removePublishStreamUrl %@", {url});
  }
  void enableInnerCDN(bool enabled, SwitchCompletion done) override {
    context_->ask(std::move(done), "enableInnerCDN %@", {enabled});
  }

 private:
  /// What the config sets, and nothing else.
  static std::string text(const LMRTCMixConfig& config) {
    std::string out;
    const auto add = [&out](std::string_view format, FormatValues values) {
      out += lumo::format(format, values);
    };
    const auto& video = config.mediaConfig.videoConfig;
    if (config.layoutMode) add(" layout:%@", {*config.layoutMode});
    if (config.customMode) add(" custom:%@", {*config.customMode});
    if (config.customLayouts) add(" layouts:%@", {config.customLayouts->size()});
    for (const auto& l : config.customLayouts.value_or(std::vector<LMRTCCustomLayout>())) {
      add(" %@[%@,%@ %@x%@]", {l.videoStream->streamId(), l.x, l.y, l.width, l.height});
    }
    if (config.customMixAudios) add(" audios:%@", {config.customMixAudios->size()});
    for (const auto& audio : config.customMixAudios.value_or(std::vector<LMRTCCustomMixAudio>())) {
      add(" %@", {audio.audioStream->streamId()});
    }
    if (video.backgroundColor()) add(" color:%@", {*video.backgroundColor()});
    if (video.videoExtend.renderMode) add(" render:%@", {*video.videoExtend.renderMode});
    if (config.mediaConfig.audioConfig.bitrate) add(" audio:%@", {config.mediaConfig.audioConfig.bitrate});
    for (const auto* l : {&video.videoLayout, &video.tinyVideoLayout}) {
      if (!l->fps && !l->width && !l->height && !l->bitrate) continue;
      add(" %@:%@,%@,%@,%@",
          {l == &video.videoLayout ? "normal" : "tiny", l->fps, l->width, l->height, l->bitrate});
    }
    return out;
  }

  const Shared context_;
};

class RemoteUser : public LMRTCRemoteUser, Counted {
 public:
  RemoteUser(std::optional<std::string> id, std::vector<std::shared_ptr<LMRTCInputStream>> published)
      : id_(std::move(id)), streams_(std::move(published)) {}
  std::optional<std::string> userId() const override { return id_; }
  std::vector<std::shared_ptr<LMRTCInputStream>> remoteStreams() const override { return streams_; }

 private:
  const std::optional<std::string> id_;
  const std::vector<std::shared_ptr<LMRTCInputStream>> streams_;
};

class LocalUser : public LMRTCLocalUser, Counted {
 public:
  explicit LocalUser(Shared context) : context_(std::move(context)) {}

  /// What live publications deliver, whatever their code.
  Cell<std::shared_ptr<LMRTCLiveInfo>> nextLiveInfo;

  /// What the local user publishes. Set before threads use the user.
  OutputStreams published;

  const std::string& userId() const override { return id_; }
  OutputStreams streams() const override { return published; }
  void publishStreams(const OutputStreams& streams, Completion done) override {
    answer("publishStreams " + ids(streams), std::move(done));
  }
  void unpublishStreams(const OutputStreams& streams, Completion done) override {
    answer("unpublishStreams " + ids(streams), std::move(done));
  }
  void publishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream, LiveCompletion done) override {
    answerLive("publishLiveStream " + stream->streamId(), std::move(done));
  }
  void publishDefaultLiveStreams(LiveCompletion done) override {
    answerLive("publishDefaultLiveStreams", std::move(done));
  }
  void unpublishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion done) override {
    answer("unpublishLiveStream " + stream->streamId(), std::move(done));
  }
  void unpublishDefaultLiveStreams(Completion done) override {
    answer("unpublishDefaultLiveStreams", std::move(done));
  }
  void subscribeStream(const std::optional<InputStreams>& streams,
                       const std::optional<InputStreams>& tinyStreams, Completion done) override {
    answer("subscribeStream " + (streams ? ids(*streams) : "nil") + " tiny " +
               (tinyStreams ? ids(*tinyStreams) : "nil"),
           std::move(done));
  }
  void unsubscribeStreams(const InputStreams& streams, Completion done) override {
    answer("unsubscribeStreams " + ids(streams), std::move(done));
  }
  void publishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion done) override {
    answer("publishStream " + stream->streamId(), std::move(done));
  }
  void unpublishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion done) override {
    answer("unpublishStream " + stream->streamId(), std::move(done));
  }
  /// Completed with 0: succeeds; with kKicked: kicks; with any other code: fails.
  static constexpr std::int64_t kKicked = -1;
  void switchToBroadcaster(const LMRTCMixConfig* config, BecameBroadcaster onSucceed, Failed onFailed,
                           Kicked onKicked) override {
    context_->call("switchToBroadcaster %@", {config ? "config" : "nil"});
    context_->owe([=, info = nextLiveInfo.get()](std::int64_t code) {
      if (code == kKicked) return onKicked();
      return code == 0 ? onSucceed(info) : onFailed(code);
    });
  }
  void switchToAudienceOnSucceed(std::function<void()> onSucceed, Failed onFailed, Kicked onKicked) override {
    context_->call("switchToAudienceOnSucceed");
    context_->owe([=](std::int64_t code) {
      if (code == kKicked) return onKicked();
      return code == 0 ? onSucceed() : onFailed(code);
    });
  }
  void requestJoinOtherRoom(const std::string& roomId, const std::string& userId, bool autoMix,
                            const std::string& extra, CodeCompletion done) override {
    context_->ask(std::move(done), "requestJoinOtherRoom %@ %@ %@ %@", {roomId, userId, autoMix, extra});
  }
  void cancelRequestJoinOtherRoom(const std::string& roomId, const std::string& userId,
                                  const std::string& extra, CodeCompletion done) override {
    context_->ask(std::move(done), "cancelRequestJoinOtherRoom %@ %@ %@", {roomId, userId, extra});
  }
  void responseJoinOtherRoom(const std::string& roomId, const std::string& userId, bool agree, bool autoMix,
                             const std::string& extra, CodeCompletion done) override {
    context_->ask(std::move(done), "responseJoinOtherRoom %@ %@ %@ %@ %@",
                  {roomId, userId, agree, autoMix, extra});
  }
  void setEnableSEI(bool enabled, CodeCompletion done) override {
    context_->ask(std::move(done), "setEnableSEI %@", {enabled});
  }
  std::int64_t sendSEI(const std::string& sei) override {
    context_->call("sendSEI %@", {sei});
    return seiAnswer;
  }

  std::int64_t seiAnswer = 0;  ///< what `sendSEI` returns

 private:
  template <class Streams>
  static std::string ids(const Streams& streams) {
    std::vector<std::string> ids;
    for (const auto& stream : streams)
      ids.push_back(stream->streamId() + (stream->mediaType() == 1 ? ":v" : ":a"));
    return lumo::format("%@", {ids});
  }
  void answer(const std::string& what, Completion done) { context_->ask(std::move(done), "%@", {what}); }
  void answerLive(const std::string& what, LiveCompletion done) {
    context_->call("%@", {what});
    context_->owe([done = std::move(done), info = nextLiveInfo.get()](std::int64_t code) {
      done(code == 0, code, info);
    });
  }

  const Shared context_;
  const std::string id_ = "me";
};

/// What the main room and other rooms share. Set the fields before threads use the room.
template <class Base, class Delegate>
class BaseRoom : public Base, Counted {
 public:
  BaseRoom(Shared shared, std::string id) : context(std::move(shared)), id_(std::move(id)) {}

  std::vector<std::shared_ptr<LMRTCRemoteUser>> users;

  const std::string& roomId() const override { return id_; }
  std::vector<std::shared_ptr<LMRTCRemoteUser>> remoteUsers() const override { return users; }
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(const std::string& userId) const override {
    for (const auto& user : users) {
      if (user->userId() == userId) return user;
    }
    return nullptr;
  }
  void setDelegate(std::weak_ptr<Delegate> delegate) override {
    context->call("%@.setDelegate %@", {id_, delegate.expired() ? "nil" : "engine"});
    delegate_.set(std::move(delegate));
  }
  /// The installed listener; an event is fired by calling it.
  std::shared_ptr<Delegate> events() const { return delegate_.get().lock(); }

 protected:
  const Shared context;

 private:
  const std::string id_;
  Cell<std::weak_ptr<Delegate>> delegate_;
};

class Room : public BaseRoom<LMRTCRoom, LMRTCRoomEventDelegate> {
 public:
  Room(Shared shared, std::string id) : BaseRoom(std::move(shared), std::move(id)) {}

  std::shared_ptr<LocalUser> me = std::make_shared<LocalUser>(context);
  std::vector<std::string> others;
  std::vector<std::shared_ptr<LMRTCInputStream>> live;
  std::shared_ptr<LMRTCCDNInputStream> cdn;

  std::string sessionId() const override { return "session of " + roomId(); }
  std::shared_ptr<LMRTCLocalUser> localUser() const override { return me; }
  std::vector<std::string> otherRoomIdArray() const override { return others; }
  std::vector<std::shared_ptr<LMRTCInputStream>> getLiveStreams() const override { return live; }
  std::shared_ptr<LMRTCCDNInputStream> getCDNStream() const override { return cdn; }
  void muteAllRemoteAudio(bool mute) override { context->call("%@.muteAllRemoteAudio %@", {roomId(), mute}); }
  void setReceivedAudioBufferCallback(LMRTCAudioDataCallback callback) override {
    context->call("%@.setReceivedAudioBufferCallback %@", {roomId(), callback ? "hook" : "nil"});
    received.set(std::move(callback));
  }

  Cell<LMRTCAudioDataCallback> received;
};

using OtherRoom = BaseRoom<LMRTCOtherRoom, LMRTCOtherRoomEventDelegate>;

class EffectManager : public LMRTCAudioEffectManager, Counted {
 public:
  explicit EffectManager(Shared context) : context_(std::move(context)) {}
  void playEffect(std::int64_t id, const std::string& path, std::int64_t loops, bool publish) override {
    context_->call("playEffect %@ %@ %@ %@", {id, path, loops, publish});
  }
  void setVolumeOfEffect(std::int64_t id, std::uint64_t volume) override {
    context_->call("setVolumeOfEffect %@ %@", {id, volume});
  }
  std::int64_t getVolumeOfEffectId(std::int64_t id) const override { return 70 + id; }
  void pauseEffect(std::int64_t id) override { context_->call("pauseEffect %@", {id}); }
  void resumeEffect(std::int64_t id) override { context_->call("resumeEffect %@", {id}); }
  void stopEffect(std::int64_t id) override { context_->call("stopEffect %@", {id}); }
  void pauseAllEffects() override { context_->call("pauseAllEffects"); }
  void resumeAllEffects() override { context_->call("resumeAllEffects"); }
  void stopAllEffects() override { context_->call("stopAllEffects"); }
  void setEffectsVolume(std::uint64_t volume) override { context_->call("setEffectsVolume %@", {volume}); }
  std::int64_t getEffectsVolume() const override { return 60; }

 private:
  const Shared context_;
};

class Mixer : public LMRTCAudioMixer, Counted {
 public:
  explicit Mixer(Shared context) : context_(std::move(context)) {}
  void setDelegate(std::weak_ptr<LMRTCAudioMixerAudioPlayDelegate> delegate) override {
    context_->call("mixer.setDelegate %@", {delegate.expired() ? "nil" : "engine"});
    delegate_.set(std::move(delegate));
  }
  std::shared_ptr<LMRTCAudioMixerAudioPlayDelegate> events() const { return delegate_.get().lock(); }
  bool startMixingWithURL(const std::string& url, bool playback, std::int64_t mode,
                          std::uint64_t loops) override {
    context_->call("startMixingWithURL %@ %@ %@ %@", {url, playback, mode, loops});
    return accepts;
  }
  void pause() override { context_->call("mixer.pause"); }
  void resume() override { context_->call("mixer.resume"); }
  void stop() override { context_->call("mixer.stop"); }
  void setMixingVolume(std::uint64_t volume) override { mixing_ = volume; }
  std::uint64_t mixingVolume() const override { return mixing_; }
  void setPlayingVolume(std::uint64_t volume) override { playing_ = volume; }
  std::uint64_t playingVolume() const override { return playing_; }
  void setPlayProgress(double progress) override { context_->call("setPlayProgress %@", {progress}); }

  std::atomic<bool> accepts = true;  ///< the answer to a start

 private:
  const Shared context_;
  std::atomic<std::uint64_t> mixing_ = 100;
  std::atomic<std::uint64_t> playing_ = 100;
  Cell<std::weak_ptr<LMRTCAudioMixerAudioPlayDelegate>> delegate_;
};

class Engine : public LMRTCEngine, Counted {
 public:
  explicit Engine(Shared context) : context_(std::move(context)) {}

  /// What joins deliver, whatever their code.
  Cell<std::shared_ptr<LMRTCRoom>> nextRoom;

  void setDelegate(std::weak_ptr<LMRTCEngineEventDelegate> delegate) override {
    context_->call("setDelegate %@", {delegate.expired() ? "nil" : "engine"});
    delegate_.set(std::move(delegate));
  }
  std::shared_ptr<LMRTCEngineEventDelegate> events() const { return delegate_.get().lock(); }

  void setMediaServerUrl(const std::string& url) override { context_->call("setMediaServerUrl %@", {url}); }
  void initWithConfig(const LMRTCConfig& c) override {
    context_->call("initWithConfig reconnect:%@ srtp:%@ report:%@ mix:%@ mismatch:%@",
                   {c.isEnableAutoReconnect(), c.enableSRTP(), c.statusReportInterval(),
                    c.enableMixWithOthers(), c.enableVersionMismatch()});
  }
  void unInit() override { context_->call("unInit"); }
  void joinRoom(const std::string& roomId, const LMRTCRoomConfig& c, JoinCompletion done) override {
    const auto text = [](std::optional<std::int64_t> value) {
      return value ? std::to_string(*value) : "unset";
    };
    context_->call(
        "joinRoom %@ live:%@ room:%@ role:%@ join:%@",
        {roomId, text(c.liveType()), text(c.roomType()), text(c.roleType()), text(c.joinRoomType())});
    context_->owe([done = std::move(done), room = std::weak_ptr(nextRoom.get())](std::int64_t code) {
      done(code, room.lock());
    });
  }
  void leaveRoom(Completion done) override { context_->ask(std::move(done), "leaveRoom"); }
  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const override { return microphone; }
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const override { return camera; }
  void enableSpeaker(bool enabled) override { context_->call("enableSpeaker %@", {enabled}); }
  void setStatusReportDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate) override {
    context_->call("setStatusReportDelegate %@", {delegate.expired() ? "nil" : "engine"});
    statusDelegate.set(std::move(delegate));
  }
  void joinOtherRoom(const std::string& roomId, JoinOtherCompletion done) override {
    context_->call("joinOtherRoom %@", {roomId});
    context_->owe(
        [done = std::move(done), other = nextOtherRoom.get()](std::int64_t code) { done(code, other); });
  }
  void leaveOtherRoom(const std::string& roomId, bool notifyFinished, LeaveOtherCompletion done) override {
    context_->ask(std::move(done), "leaveOtherRoom %@ %@", {roomId, notifyFinished});
  }
  std::shared_ptr<LMRTCFileVideoOutputStream> createFileVideoOutputStream(
      const std::string& url, bool replaceAudio, bool playback, const std::string& tag,
      const LMRTCVideoStreamConfig&) override {
    context_->call("createFileVideoOutputStream %@ %@ %@ %@", {url, replaceAudio, playback, tag});
    return nextFile.get();
  }
  std::shared_ptr<LMRTCAudioEffectManager> audioEffectManager() const override { return effects_; }
  void startEchoTest(double seconds) override { context_->call("startEchoTest %@", {seconds}); }
  void stopEchoTest() override { context_->call("stopEchoTest"); }
  void setProbeTestDelegate(std::weak_ptr<LMRTCProbeTestDelegate> delegate) override {
    context_->call("setProbeTestDelegate %@", {delegate.expired() ? "nil" : "engine"});
    probeDelegate.set(std::move(delegate));
  }
  void startRTCProbeTest(Completion done) override { context_->ask(std::move(done), "startRTCProbeTest"); }
  void stopRTCProbeTest(Completion done) override { context_->ask(std::move(done), "stopRTCProbeTest"); }
  void preconnectMediaServer() override { context_->call("preconnectMediaServer"); }

  /// What other joins and file streams deliver.
  Cell<std::shared_ptr<LMRTCOtherRoom>> nextOtherRoom;
  Cell<std::shared_ptr<LMRTCFileVideoOutputStream>> nextFile;
  /// The installed listeners.
  Cell<std::weak_ptr<LMRTCStatusReportDelegate>> statusDelegate;
  Cell<std::weak_ptr<LMRTCProbeTestDelegate>> probeDelegate;

 private:
  const Shared context_;

 public:
  const std::shared_ptr<Microphone> microphone = std::make_shared<Microphone>(context_);
  const std::shared_ptr<Camera> camera = std::make_shared<Camera>(context_);

 private:
  const std::shared_ptr<EffectManager> effects_ = std::make_shared<EffectManager>(context_);
  Cell<std::weak_ptr<LMRTCEngineEventDelegate>> delegate_;
};

class VideoView : public LMRTCVideoView, Counted {
 public:
  VideoView(Shared context, const UIRect& frame) : LMRTCVideoView(frame), context_(std::move(context)) {}
  void setFillMode(std::int64_t mode) override { context_->call("view.setFillMode %@", {mode}); }
  void setIsPreviewMirror(bool mirror) override { context_->call("view.setIsPreviewMirror %@", {mirror}); }
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame&) override {}

 private:
  const Shared context_;
};

/// An SDK that does nothing but write down what it is asked and answer when the test says so.
class Provider : public LMRTCProvider {
 public:
  const Shared context = std::make_shared<Context>();
  const std::shared_ptr<Engine> engine = std::make_shared<Engine>(context);
  const std::shared_ptr<Mixer> mixer = std::make_shared<Mixer>(context);

  std::shared_ptr<LMRTCEngine> sharedEngine() override { return engine; }
  std::string codeDesc(std::int64_t code) override { return code == 0 ? "ok" : "sdk" + std::to_string(code); }
  std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect& frame) override {
    context->call("createVideoView %@,%@ %@x%@", {frame.x, frame.y, frame.width, frame.height});
    return std::make_shared<VideoView>(context, frame);
  }

  std::shared_ptr<LMRTCAudioMixer> sharedAudioMixer() override { return mixer; }
  double durationOfAudioFile(const std::string&) override { return 3.9; }
  // The pixels are for tests on the in-process SDK.
  void i420Rotate(const std::uint8_t*, std::int32_t, const std::uint8_t*, std::int32_t, const std::uint8_t*,
                  std::int32_t, std::uint8_t*, std::int32_t, std::uint8_t*, std::int32_t, std::uint8_t*,
                  std::int32_t, std::int32_t, std::int32_t, std::int32_t rotation) override {
    context->call("i420Rotate %@", {rotation});
  }
  void i420ToARGB(const std::uint8_t*, std::int32_t, const std::uint8_t*, std::int32_t, const std::uint8_t*,
                  std::int32_t, std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override {
    context->call("i420ToARGB");
  }

  /// Answers the oldest call that waits for its completion; false when none waits.
  bool complete(std::int64_t code = 0) {
    Context::Completion completion;
    {
      const std::lock_guard lock(context->mutex);
      if (context->owed.empty()) return false;
      completion = std::move(context->owed.front());
      context->owed.pop_front();
    }
    completion(code);
    return true;
  }
};

}  // namespace lumo::fake
