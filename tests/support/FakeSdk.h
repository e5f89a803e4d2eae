#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
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

using Text = const std::string&;
using Int = std::int64_t;

/// Counts the fakes that are alive, so that a test can tell that nothing holds one any more.
class Counted {
 public:
  static int alive() { return count_.load(); }

 protected:
  Counted() { ++count_; }
  Counted(const Counted&) { ++count_; }
  ~Counted() { --count_; }

 private:
  static inline std::atomic<int> count_{0};
};

/// What all fakes of one test share: the trace, and the completions that the SDK still owes.
struct Context {
  using Completion = std::function<void(std::int64_t code)>;

  /// @param calls  null: nothing is written down
  explicit Context(std::shared_ptr<Trace> calls = std::make_shared<Trace>()) : trace(std::move(calls)) {}
  virtual ~Context() = default;
  /// Keeps a completion until the test asks for it.
  virtual void owe(Completion completion) {
    const std::lock_guard lock(mutex);
    owed.push_back(std::move(completion));
  }

  const std::shared_ptr<Trace> trace;
  std::mutex mutex;  ///< guards `owed`
  std::deque<Completion> owed;
};
using Shared = std::shared_ptr<Context>;

/// How the trace shows an argument: listeners as "engine", streams as their names, other objects and hooks as
/// "set", what is absent as "nil".
template <class Value>
std::string word(const Value& value) {
  if constexpr (std::is_convertible_v<const Value&, FormatValue>) {
    return lumo::format("%@", {value});
  } else if constexpr (requires { value.expired(); }) {
    return value.expired() ? "nil" : "engine";
  } else if constexpr (requires { value->streamId(); }) {
    return value ? value->streamId() : "nil";
  } else {
    return value ? "set" : "nil";
  }
}
template <class Stream>
std::string word(const std::vector<std::shared_ptr<Stream>>& streams) {
  std::vector<std::string> ids;
  for (const auto& one : streams) ids.push_back(one->streamId() + (one->mediaType() == 1 ? ":v" : ":a"));
  return word(ids);
}
template <class Stream>
std::string word(const std::optional<std::vector<std::shared_ptr<Stream>>>& streams) {
  return streams ? word(*streams) : "nil";
}
inline std::string word(const UIRect& r) {
  return lumo::format("%@,%@ %@x%@", {r.x, r.y, r.width, r.height});
}
inline std::string word(const LMRTCVideoStreamConfig& c) {
  return lumo::format("%@-%@ fps %@ size %@",
                      {c.minBitrate(), c.maxBitrate(), c.videoFps(), c.videoSizePreset()});
}
/// What the config sets, and nothing else.
inline std::string word(const LMRTCMixConfig& config) {
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
    const char* name = l == &video.videoLayout ? "normal" : "tiny";
    add(" %@:%@,%@,%@,%@", {name, l->fps, l->width, l->height, l->bitrate});
  }
  return out;
}

/// An object of the SDK that writes down its calls, with `name` in front when it has one.
template <class Base>
class Fake : public Base, Counted {
 public:
  template <class... Arguments>
  explicit Fake(Shared shared, Text name = {}, const Arguments&... arguments)
      : Base(arguments...),
        context(std::move(shared)),
        prefix_(name.empty() ? "sdk " : "sdk " + name + ".") {}

 protected:
  template <class... Values>
  void say(Text what, const Values&... values) const {
    if (!context->trace) return;
    std::string line = prefix_ + what;
    ((line += " " + word(values)), ...);
    context->trace->add(line);
  }
  /// Writes the call down and owes its completion, which takes the code or success and the code.
  template <class Done, class... Values>
  void ask(Done done, Text what, const Values&... values) const {
    say(what, values...);
    context->owe([done = std::move(done)](Int code) {
      if constexpr (std::is_invocable_v<const Done&, bool, Int>) {
        done(code == 0, code);
      } else {
        done(code);
      }
    });
  }

  /// Writes down that a hook or a listener is installed, and keeps it.
  template <class Value>
  void keep(Cell<Value>& cell, Value value, Text what) const {
    say(what, value);
    cell.set(std::move(value));
  }

  const Shared context;

 private:
  const std::string prefix_;
};

/// Adds the listener.
template <class Base, class Listener>
class Heard : public Base {
 public:
  using Base::Base;
  void setDelegate(std::weak_ptr<Listener> value) override { this->keep(listener_, value, __func__); }
  /// The installed listener; an event is fired by calling it.
  std::shared_ptr<Listener> events() const { return listener_.get().lock(); }

 private:
  Cell<std::weak_ptr<Listener>> listener_;
};

template <class Base>
class Stream : public Fake<Base> {
 public:
  explicit Stream(Shared shared, Text user, Text tag = kLMRTCDefaultStreamTag, Int mediaType = 0,
                  Int kind = 0, Int state = LMRTCResourceStateNormal)
      : Fake<Base>(std::move(shared), user + "_" + tag),
        streamId_(user + "_" + tag),
        userId_(user),
        tag_(tag),
        mediaType_(mediaType),
        kind_(kind),
        state_(state) {}

  Text streamId() const override { return streamId_; }
  Text userId() const override { return userId_; }
  Text tag() const override { return tag_; }
  Int mediaType() const override { return mediaType_; }
  Int mediaStreamType() const override { return kind_; }
  void setIsMute(bool mute) override { this->say(__func__, mute); }
  bool isMute() const override { return false; }

 private:
  const std::string streamId_, userId_, tag_;
  const Int mediaType_, kind_;

 protected:
  const Int state_;
};

template <class Base>
class Input : public Stream<Base> {
 public:
  using Stream<Base>::Stream;
  Int resourceState() const override { return this->state_; }
  void setAudioDataCallback(LMRTCAudioDataCallback value) override { this->keep(audioData, value, __func__); }

  /// The installed hook; sound is delivered by calling it.
  Cell<LMRTCAudioDataCallback> audioData;
};

/// An input stream that can be shown.
template <class Base>
class VisibleInput : public Input<Base> {
 public:
  using Input<Base>::Input;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override { this->say(__func__, view); }
};

using AudioInput = Input<LMRTCAudioInputStream>;
using VideoInput = Heard<VisibleInput<LMRTCVideoInputStream>, LMRTCVideoInputStreamDelegate>;
/// Says that it is of some media type, without being a stream class of the SDK.
using OddInput = Input<LMRTCInputStream>;

class CdnInput : public VisibleInput<LMRTCCDNInputStream> {
 public:
  using VisibleInput::VisibleInput;
  void setVideoConfig(Int preset, Int fps, Completion done) override { ask(done, __func__, preset, fps); }
};

class Microphone : public Stream<LMRTCAudioOutputStream> {
 public:
  using Stream::Stream;
  void setAudioQuality(Int quality, Int scenario) override { say(__func__, quality, scenario); }
  void setRecordingVolume(std::uint64_t volume) override { say(__func__, volume); }
  void setAudioCodecType(Int type) override { say(__func__, type); }
  void setMicrophoneDisable(bool disabled) override { say(__func__, disabled); }
  void setRecordAudioDataCallback(LMRTCAudioDataCallback value) override { keep(recorded, value, __func__); }
  void setWillSendAudioBufferCallback(LMRTCAudioDataCallback value) override {
    keep(willSend, value, __func__);
  }

  Cell<LMRTCAudioDataCallback> recorded, willSend;
};

template <class Base>
class VideoOutput : public Stream<Base> {
 public:
  using Hook = LMRTCVideoOutputStream::SendBufferCallback;
  using Stream<Base>::Stream;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override { this->say(__func__, view); }
  void setVideoConfig(const LMRTCVideoStreamConfig& config) override { this->say(__func__, config); }
  void setVideoSendBufferCallback(Hook value) override { this->keep(willSend, value, __func__); }

  Cell<Hook> willSend;
};

class Camera : public VideoOutput<LMRTCCameraVideoOutputStream> {
 public:
  using VideoOutput::VideoOutput;
  void setTinyVideoConfig(const LMRTCVideoStreamConfig& config) override { say(__func__, config); }
  void setEnableTinyStream(bool enabled) override { say(__func__, enabled); }
  void setIsEncoderMirror(bool mirror) override { say(__func__, mirror); }
  void startCapture() override { say(__func__); }
  void stopCapture() override { say(__func__); }
  void setCameraPosition(Int newPosition) override { say(__func__, newPosition); }
  Int cameraPosition() const override { return position; }
  void switchCamera() override { say(__func__); }
  bool isCameraFocusSupported() const override { return supported; }
  bool isCameraExposurePositionSupported() const override { return supported; }
  void setCameraFocusPositionInPreview(const UIPoint& point) override { say(__func__, point); }
  void setCameraExposurePositionInPreview(const UIPoint& point) override { say(__func__, point); }
  void setVideoOrientation(Int orientation) override { say(__func__, orientation); }
  bool setWaterMark(const std::shared_ptr<const UIImage>& image, const UIRect& place) override {
    say(__func__, image, place);
    return supported;
  }

  std::atomic<Int> position = LMRTCDeviceCameraFront;
  std::atomic<bool> supported = true;  ///< what questions and the watermark are answered with
};

/// A file stream, as a custom stream of the local user.
class FileOutput : public Heard<VideoOutput<LMRTCFileVideoOutputStream>, LMRTCFileVideoOutputStreamDelegate> {
 public:
  FileOutput(Shared shared, Text tag) : Heard(std::move(shared), "me", tag, 1, 1) {}
  void stop() override { say(__func__); }
};

class LiveInfo : public Fake<LMRTCLiveInfo> {
 public:
  using Fake::Fake;
  void setMixConfig(const LMRTCMixConfig& config, Completion done) override {
    ask(done, "setMixConfig" + word(config));
  }
  void addPublishStreamUrl(Text url, Completion done) override { ask(done, __func__, url); }
  void removePublishStreamUrl(Text url, Completion done) override { ask(done, __func__, url); }
  void enableInnerCDN(bool enabled, SwitchCompletion done) override { ask(done, __func__, enabled); }
};

class RemoteUser : public LMRTCRemoteUser, Counted {
 public:
  using Streams = std::vector<std::shared_ptr<LMRTCInputStream>>;
  RemoteUser(std::optional<std::string> id, Streams published)
      : id_(std::move(id)), streams_(std::move(published)) {}
  std::optional<std::string> userId() const override { return id_; }
  Streams remoteStreams() const override { return streams_; }

 private:
  const std::optional<std::string> id_;
  const Streams streams_;
};

class LocalUser : public Fake<LMRTCLocalUser> {
 public:
  using Fake::Fake;
  using Output = std::shared_ptr<LMRTCOutputStream>;
  using MaybeInputs = std::optional<InputStreams>;

  /// What live publications deliver, whatever their code.
  Cell<std::shared_ptr<LMRTCLiveInfo>> nextLiveInfo;
  /// What the local user publishes. Set before threads use the user.
  OutputStreams published;
  Int seiAnswer = 0;  ///< what `sendSEI` returns
  /// Completes a role switch: 0 succeeds, this kicks, any other code fails.
  static constexpr Int kKicked = -1;

  Text userId() const override { return id_; }
  OutputStreams streams() const override { return published; }
  void publishStreams(const OutputStreams& s, Completion done) override { ask(done, __func__, s); }
  void unpublishStreams(const OutputStreams& s, Completion done) override { ask(done, __func__, s); }
  void publishLiveStream(const Output& s, LiveCompletion done) override { ask(live(done), __func__, s); }
  void publishDefaultLiveStreams(LiveCompletion done) override { ask(live(done), __func__); }
  void unpublishLiveStream(const Output& s, Completion done) override { ask(done, __func__, s); }
  void unpublishDefaultLiveStreams(Completion done) override { ask(done, __func__); }
  void subscribeStream(const MaybeInputs& normal, const MaybeInputs& tiny, Completion done) override {
    ask(done, __func__, normal, "tiny", tiny);
  }
  void unsubscribeStreams(const InputStreams& s, Completion done) override { ask(done, __func__, s); }
  void publishStream(const Output& s, Completion done) override { ask(done, __func__, s); }
  void unpublishStream(const Output& s, Completion done) override { ask(done, __func__, s); }
  void switchToBroadcaster(const LMRTCMixConfig* config, BecameBroadcaster done, Failed failed,
                           Kicked kicked) override {
    const auto succeed = [done, info = nextLiveInfo.get()] { done(info); };
    ask(switched(succeed, failed, kicked), __func__, config != nullptr);
  }
  void switchToAudienceOnSucceed(std::function<void()> done, Failed failed, Kicked kicked) override {
    ask(switched(done, failed, kicked), __func__);
  }
  void requestJoinOtherRoom(Text room, Text user, bool mix, Text extra, CodeCompletion done) override {
    ask(done, __func__, room, user, mix, extra);
  }
  void cancelRequestJoinOtherRoom(Text room, Text user, Text extra, CodeCompletion done) override {
    ask(done, __func__, room, user, extra);
  }
  void responseJoinOtherRoom(Text room, Text user, bool agree, bool mix, Text extra,
                             CodeCompletion done) override {
    ask(done, __func__, room, user, agree, mix, extra);
  }
  void setEnableSEI(bool enabled, CodeCompletion done) override { ask(done, __func__, enabled); }
  Int sendSEI(Text sei) override { return say(__func__, sei), seiAnswer; }

 private:
  Context::Completion live(LiveCompletion done) const {
    return [done = std::move(done), info = nextLiveInfo.get()](Int code) { done(code == 0, code, info); };
  }
  static Context::Completion switched(std::function<void()> done, Failed failed, Kicked kicked) {
    return [=](Int code) {
      if (code == kKicked) return kicked();
      return code == 0 ? done() : failed(code);
    };
  }

  const std::string id_ = "me";
};

/// What the main room and other rooms share. Set the fields before threads use the room.
template <class Base>
class AnyRoom : public Fake<Base> {
 public:
  AnyRoom(Shared shared, Text id) : Fake<Base>(std::move(shared), id), id_(id) {}

  std::vector<std::shared_ptr<LMRTCRemoteUser>> users;

  Text roomId() const override { return id_; }
  std::vector<std::shared_ptr<LMRTCRemoteUser>> remoteUsers() const override { return users; }
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(Text userId) const override {
    const auto found = std::ranges::find(users, userId, &LMRTCRemoteUser::userId);
    return found == users.end() ? nullptr : *found;
  }

 private:
  const std::string id_;
};

class Room : public Heard<AnyRoom<LMRTCRoom>, LMRTCRoomEventDelegate> {
 public:
  using Heard::Heard;

  std::shared_ptr<LocalUser> me = std::make_shared<LocalUser>(context);
  std::vector<std::string> others;
  std::vector<std::shared_ptr<LMRTCInputStream>> live;
  std::shared_ptr<LMRTCCDNInputStream> cdn;
  Cell<LMRTCAudioDataCallback> received;

  std::string sessionId() const override { return "session of " + roomId(); }
  std::shared_ptr<LMRTCLocalUser> localUser() const override { return me; }
  std::vector<std::string> otherRoomIdArray() const override { return others; }
  std::vector<std::shared_ptr<LMRTCInputStream>> getLiveStreams() const override { return live; }
  std::shared_ptr<LMRTCCDNInputStream> getCDNStream() const override { return cdn; }
  void muteAllRemoteAudio(bool mute) override { say(__func__, mute); }
  void setReceivedAudioBufferCallback(LMRTCAudioDataCallback value) override {
    keep(received, value, __func__);
  }
};

using OtherRoom = Heard<AnyRoom<LMRTCOtherRoom>, LMRTCOtherRoomEventDelegate>;

class EffectManager : public Fake<LMRTCAudioEffectManager> {
 public:
  using Fake::Fake;
  void playEffect(Int id, Text path, Int loops, bool publish) override {
    say(__func__, id, path, loops, publish);
  }
  void setVolumeOfEffect(Int id, std::uint64_t volume) override { say(__func__, id, volume); }
  Int getVolumeOfEffectId(Int id) const override { return 70 + id; }
  void pauseEffect(Int id) override { say(__func__, id); }
  void resumeEffect(Int id) override { say(__func__, id); }
  void stopEffect(Int id) override { say(__func__, id); }
  void pauseAllEffects() override { say(__func__); }
  void resumeAllEffects() override { say(__func__); }
  void stopAllEffects() override { say(__func__); }
  void setEffectsVolume(std::uint64_t volume) override { say(__func__, volume); }
  Int getEffectsVolume() const override { return 60; }
};

class Mixer : public Heard<Fake<LMRTCAudioMixer>, LMRTCAudioMixerAudioPlayDelegate> {
 public:
  using Heard::Heard;
  bool startMixingWithURL(Text url, bool playback, Int mode, std::uint64_t loops) override {
    say(__func__, url, playback, mode, loops);
    return accepts;
  }
  void pause() override { say(__func__); }
  void resume() override { say(__func__); }
  void stop() override { say(__func__); }
  void setMixingVolume(std::uint64_t volume) override { mixing_ = volume; }
  std::uint64_t mixingVolume() const override { return mixing_; }
  void setPlayingVolume(std::uint64_t volume) override { playing_ = volume; }
  std::uint64_t playingVolume() const override { return playing_; }
  void setPlayProgress(double progress) override { say(__func__, progress); }

  std::atomic<bool> accepts = true;  ///< the answer to a start

 private:
  std::atomic<std::uint64_t> mixing_ = 100, playing_ = 100;
};

class Engine : public Heard<Fake<LMRTCEngine>, LMRTCEngineEventDelegate> {
 public:
  using Heard::Heard;

  /// What joins deliver, whatever their code, and what other joins and file streams deliver.
  Cell<std::shared_ptr<LMRTCRoom>> nextRoom;
  Cell<std::shared_ptr<LMRTCOtherRoom>> nextOtherRoom;
  Cell<std::shared_ptr<LMRTCFileVideoOutputStream>> nextFile;
  /// The installed listeners.
  Cell<std::weak_ptr<LMRTCStatusReportDelegate>> statusDelegate;
  Cell<std::weak_ptr<LMRTCProbeTestDelegate>> probeDelegate;
  const std::shared_ptr<Microphone> microphone = std::make_shared<Microphone>(context, "me", "mic");
  const std::shared_ptr<Camera> camera = std::make_shared<Camera>(context, "me", "cam", 1);

  void setMediaServerUrl(Text url) override { say(__func__, url); }
  void initWithConfig(const LMRTCConfig& c) override {
    say(lumo::format("initWithConfig reconnect:%@ srtp:%@ report:%@ mix:%@ mismatch:%@",
                     {c.isEnableAutoReconnect(), c.enableSRTP(), c.statusReportInterval(),
                      c.enableMixWithOthers(), c.enableVersionMismatch()}));
  }
  void unInit() override { say(__func__); }
  void joinRoom(Text roomId, const LMRTCRoomConfig& c, JoinCompletion done) override {
    const auto text = [](std::optional<Int> value) { return value ? std::to_string(*value) : "unset"; };
    const auto join = [done, room = std::weak_ptr(nextRoom.get())](Int code) { done(code, room.lock()); };
    ask(join, __func__, roomId, "live:" + text(c.liveType()), "room:" + text(c.roomType()),
        "role:" + text(c.roleType()), "join:" + text(c.joinRoomType()));
  }
  void leaveRoom(Completion done) override { ask(done, __func__); }
  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const override { return microphone; }
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const override { return camera; }
  void enableSpeaker(bool enabled) override { say(__func__, enabled); }
  void setStatusReportDelegate(std::weak_ptr<LMRTCStatusReportDelegate> value) override {
    keep(statusDelegate, value, __func__);
  }
  void joinOtherRoom(Text roomId, JoinOtherCompletion done) override {
    ask([done, room = nextOtherRoom.get()](Int code) { done(code, room); }, __func__, roomId);
  }
  void leaveOtherRoom(Text roomId, bool notifyFinished, LeaveOtherCompletion done) override {
    ask(done, __func__, roomId, notifyFinished);
  }
  std::shared_ptr<LMRTCFileVideoOutputStream> createFileVideoOutputStream(
      Text url, bool replaceAudio, bool playback, Text tag, const LMRTCVideoStreamConfig&) override {
    say(__func__, url, replaceAudio, playback, tag);
    return nextFile.get();
  }
  std::shared_ptr<LMRTCAudioEffectManager> audioEffectManager() const override { return effects_; }
  void startEchoTest(double seconds) override { say(__func__, seconds); }
  void stopEchoTest() override { say(__func__); }
  void setProbeTestDelegate(std::weak_ptr<LMRTCProbeTestDelegate> value) override {
    keep(probeDelegate, value, __func__);
  }
  void startRTCProbeTest(Completion done) override { ask(done, __func__); }
  void stopRTCProbeTest(Completion done) override { ask(done, __func__); }
  void preconnectMediaServer() override { say(__func__); }

 private:
  const std::shared_ptr<EffectManager> effects_ = std::make_shared<EffectManager>(context);
};

class VideoView : public Fake<LMRTCVideoView> {
 public:
  using Fake::Fake;
  void setFillMode(Int mode) override { say(__func__, mode); }
  void setIsPreviewMirror(bool mirror) override { say(__func__, mirror); }
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame&) override {}
};

/// An SDK that does nothing but write down what it is asked and answer when the test says so. The pixels are
/// for tests on the in-process SDK.
class Provider : public LMRTCProvider {
 public:
  using Plane = const std::uint8_t*;
  using Target = std::uint8_t*;
  using Stride = std::int32_t;

  explicit Provider(Shared shared = std::make_shared<Context>()) : context(std::move(shared)) {}

  const Shared context;
  const std::shared_ptr<Engine> engine = std::make_shared<Engine>(context);
  const std::shared_ptr<Mixer> mixer = std::make_shared<Mixer>(context, "mixer");

  std::shared_ptr<LMRTCEngine> sharedEngine() override { return engine; }
  std::shared_ptr<LMRTCAudioMixer> sharedAudioMixer() override { return mixer; }
  double durationOfAudioFile(Text) override { return 3.9; }
  std::string codeDesc(Int code) override { return code == 0 ? "ok" : "sdk" + std::to_string(code); }
  std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect& frame) override {
    context->trace->add("sdk createVideoView " + word(frame));
    return std::make_shared<VideoView>(context, "view", frame);
  }
  void i420Rotate(Plane, Stride, Plane, Stride, Plane, Stride, Target, Stride, Target, Stride, Target, Stride,
                  std::int32_t, std::int32_t, std::int32_t) override {}
  void i420ToARGB(Plane, Stride, Plane, Stride, Plane, Stride, Target, Stride, std::int32_t,
                  std::int32_t) override {}

  /// Answers the oldest call that waits for its completion; false when none waits.
  bool complete(Int code = 0) {
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
