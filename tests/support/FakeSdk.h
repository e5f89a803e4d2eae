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
#include <type_traits>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioEffectManager.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
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
using Sound = LMRTCAudioDataCallback;
using InputStreams = std::vector<std::shared_ptr<LMRTCInputStream>>;
using RemoteUsers = std::vector<std::shared_ptr<LMRTCRemoteUser>>;

/// Counts the fakes that are alive, so that a test can tell that nothing holds one any more.
struct Counted {
  Counted() { ++count; }
  Counted(const Counted&) { ++count; }
  ~Counted() { --count; }
  static int alive() { return count.load(); }
  static inline std::atomic<int> count = 0;
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
template <class Value>
std::string word(const std::optional<Value>& value) {
  return value ? word(*value) : "nil";
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
  const auto& [video, audio] = config.mediaConfig;
  if (config.layoutMode) appendFormat(out, " layout:%@", {*config.layoutMode});
  if (config.customMode) appendFormat(out, " custom:%@", {*config.customMode});
  for (const auto& l : config.customLayouts.value_or(std::vector<LMRTCCustomLayout>())) {
    appendFormat(out, " %@[%@,%@ %@x%@]", {l.videoStream->streamId(), l.x, l.y, l.width, l.height});
  }
  for (const auto& one : config.customMixAudios.value_or(std::vector<LMRTCCustomMixAudio>())) {
    appendFormat(out, " %@", {one.audioStream->streamId()});
  }
  if (video.backgroundColor()) appendFormat(out, " color:%@", {*video.backgroundColor()});
  if (video.videoExtend.renderMode) appendFormat(out, " render:%@", {*video.videoExtend.renderMode});
  if (audio.bitrate) appendFormat(out, " audio:%@", {audio.bitrate});
  for (const auto* l : {&video.videoLayout, &video.tinyVideoLayout}) {
    const char* name = l == &video.videoLayout ? "normal" : "tiny";
    if (!l->fps && !l->width && !l->height && !l->bitrate) continue;
    appendFormat(out, " %@:%@,%@,%@,%@", {name, l->fps, l->width, l->height, l->bitrate});
  }
  return out.empty() ? out : out.substr(1);
}

/// An object that writes down its calls as "-> name.call arguments", or "-> call arguments" without a name.
template <class Base>
struct Fake : Base, Counted {
  template <class... Arguments>
  explicit Fake(Shared shared, Text called = {}, const Arguments&... arguments)
      : Base(arguments...), context(std::move(shared)), name(called) {}

  template <class... Values>
  void say(Text what, const Values&... values) const {
    if (!context->trace) return;
    std::string line = "-> " + name + (name.empty() ? "" : ".") + what;
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
  const std::string name;
};

/// Adds the listener.
template <class Base, class Listener>
struct Heard : Base {
  using Base::Base;
  void setDelegate(std::weak_ptr<Listener> value) override { this->keep(listener, value, __func__); }
  /// The installed listener; an event is fired by calling it.
  std::shared_ptr<Listener> events() const { return listener.get().lock(); }

  Cell<std::weak_ptr<Listener>> listener;
};

template <class Base>
struct Stream : Fake<Base> {
  explicit Stream(Shared shared, Text user, Text streamTag = kLMRTCDefaultStreamTag, Int media = 0,
                  Int streamKind = 0, Int streamState = LMRTCResourceStateNormal)
      : Fake<Base>(std::move(shared), user + "_" + streamTag),
        owner(user),
        label(streamTag),
        type(media),
        kind(streamKind),
        state(streamState) {}
  Text streamId() const override { return this->name; }
  Text userId() const override { return owner; }
  Text tag() const override { return label; }
  Int mediaType() const override { return type; }
  Int mediaStreamType() const override { return kind; }
  void setIsMute(bool mute) override { this->say(__func__, mute); }
  bool isMute() const override { return false; }

  const std::string owner, label;
  const Int type, kind, state;
};

template <class Base>
struct Input : Stream<Base> {
  using Stream<Base>::Stream;
  Int resourceState() const override { return this->state; }
  void setAudioDataCallback(Sound value) override { this->keep(audioData, value, __func__); }

  Cell<Sound> audioData;  ///< the installed hook; sound is delivered by calling it
};

/// An input stream that can be shown.
template <class Base>
struct VisibleInput : Input<Base> {
  using Input<Base>::Input;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override { this->say(__func__, view); }
};

using AudioInput = Input<LMRTCAudioInputStream>;
using VideoInput = Heard<VisibleInput<LMRTCVideoInputStream>, LMRTCVideoInputStreamDelegate>;
/// Says that it is of some media type, without being a stream class of the SDK.
using OddInput = Input<LMRTCInputStream>;

struct CdnInput : VisibleInput<LMRTCCDNInputStream> {
  using VisibleInput::VisibleInput;
  void setVideoConfig(Int preset, Int fps, Completion done) override { ask(done, __func__, preset, fps); }
};

struct Microphone : Stream<LMRTCAudioOutputStream> {
  using Stream::Stream;
  void setAudioQuality(Int quality, Int scenario) override { say(__func__, quality, scenario); }
  void setRecordingVolume(std::uint64_t volume) override { say(__func__, volume); }
  void setAudioCodecType(Int codec) override { say(__func__, codec); }
  void setMicrophoneDisable(bool disabled) override { say(__func__, disabled); }
  void setRecordAudioDataCallback(Sound hook) override { keep(recorded, hook, __func__); }
  void setWillSendAudioBufferCallback(Sound hook) override { keep(willSend, hook, __func__); }

  Cell<Sound> recorded, willSend;
};

template <class Base>
struct VideoOutput : Stream<Base> {
  using Hook = LMRTCVideoOutputStream::SendBufferCallback;
  using Stream<Base>::Stream;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override { this->say(__func__, view); }
  void setVideoConfig(const LMRTCVideoStreamConfig& config) override { this->say(__func__, config); }
  void setVideoSendBufferCallback(Hook value) override { this->keep(willSend, value, __func__); }

  Cell<Hook> willSend;
};

struct Camera : VideoOutput<LMRTCCameraVideoOutputStream> {
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
    return say(__func__, image, place), supported;
  }

  std::atomic<Int> position = LMRTCDeviceCameraFront;
  std::atomic<bool> supported = true;  ///< what questions and the watermark are answered with
};

/// A file stream, as a custom stream of the local user.
struct FileOutput : Heard<VideoOutput<LMRTCFileVideoOutputStream>, LMRTCFileVideoOutputStreamDelegate> {
  FileOutput(Shared shared, Text tag) : Heard(std::move(shared), "me", tag, 1, 1) {}
  void stop() override { say(__func__); }
};

struct LiveInfo : Fake<LMRTCLiveInfo> {
  using Fake::Fake;
  void setMixConfig(const LMRTCMixConfig& config, Completion done) override { ask(done, __func__, config); }
  void addPublishStreamUrl(Text url, Completion done) override { ask(done, __func__, url); }
  void removePublishStreamUrl(Text url, Completion done) override { ask(done, __func__, url); }
  void enableInnerCDN(bool enabled, SwitchCompletion done) override { ask(done, __func__, enabled); }
};

struct RemoteUser : LMRTCRemoteUser, Counted {
  using Streams = InputStreams;
  RemoteUser(std::optional<std::string> id, Streams all) : name(std::move(id)), streams(std::move(all)) {}
  std::optional<std::string> userId() const override { return name; }
  Streams remoteStreams() const override { return streams; }

  const std::optional<std::string> name;
  const Streams streams;
};

struct LocalUser : Fake<LMRTCLocalUser> {
  using Fake::Fake;
  using Output = std::shared_ptr<LMRTCOutputStream>;
  using Inputs = std::optional<InputStreams>;
  /// Completes a role switch: 0 succeeds, this kicks, any other code fails.
  static constexpr Int kKicked = -1;

  Text userId() const override { return id; }
  OutputStreams streams() const override { return published; }
  void publishStreams(const OutputStreams& s, Completion done) override { ask(done, __func__, s); }
  void unpublishStreams(const OutputStreams& s, Completion done) override { ask(done, __func__, s); }
  void publishLiveStream(const Output& s, LiveCompletion done) override { ask(live(done), __func__, s); }
  void publishDefaultLiveStreams(LiveCompletion done) override { ask(live(done), __func__); }
  void unpublishLiveStream(const Output& s, Completion done) override { ask(done, __func__, s); }
  void unpublishDefaultLiveStreams(Completion done) override { ask(done, __func__); }
  void subscribeStream(const Inputs& normal, const Inputs& tiny, Completion done) override {
    ask(done, __func__, normal, "tiny", tiny);
  }
  void unsubscribeStreams(const InputStreams& s, Completion done) override { ask(done, __func__, s); }
  void publishStream(const Output& s, Completion done) override { ask(done, __func__, s); }
  void unpublishStream(const Output& s, Completion done) override { ask(done, __func__, s); }
  void switchToBroadcaster(const LMRTCMixConfig* config, BecameBroadcaster done, Failed no,
                           Kicked out) override {
    ask(switched([done, info = nextLiveInfo.get()] { done(info); }, no, out), __func__, config != nullptr);
  }
  void switchToAudienceOnSucceed(std::function<void()> done, Failed no, Kicked out) override {
    ask(switched(done, no, out), __func__);
  }
  void requestJoinOtherRoom(Text room, Text user, bool mix, Text extra, CodeCompletion done) override {
    ask(done, __func__, room, user, mix, extra);
  }
  void cancelRequestJoinOtherRoom(Text room, Text user, Text extra, CodeCompletion done) override {
    ask(done, __func__, room, user, extra);
  }
  void responseJoinOtherRoom(Text room, Text user, bool yes, bool mix, Text extra,
                             CodeCompletion done) override {
    ask(done, __func__, room, user, yes, mix, extra);
  }
  void setEnableSEI(bool enabled, CodeCompletion done) override { ask(done, __func__, enabled); }
  Int sendSEI(Text sei) override { return say(__func__, sei), seiAnswer; }

  Context::Completion live(LiveCompletion done) const {
    return [done = std::move(done), info = nextLiveInfo.get()](Int code) { done(code == 0, code, info); };
  }
  static Context::Completion switched(std::function<void()> done, Failed failed, Kicked kicked) {
    return [=](Int code) { code == kKicked ? kicked() : code == 0 ? done() : failed(code); };
  }

  const std::string id = "me";
  Cell<std::shared_ptr<LMRTCLiveInfo>> nextLiveInfo;  ///< what live publications deliver, whatever their code
  OutputStreams published;                            ///< set before threads use the user
  Int seiAnswer = 0;                                  ///< what `sendSEI` returns
};

/// What the main room and other rooms share. Set the fields before threads use the room.
template <class Base>
struct AnyRoom : Fake<Base> {
  using Fake<Base>::Fake;
  Text roomId() const override { return this->name; }
  RemoteUsers remoteUsers() const override { return users; }
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(Text userId) const override {
    const auto found = std::ranges::find(users, userId, &LMRTCRemoteUser::userId);
    return found == users.end() ? nullptr : *found;
  }

  RemoteUsers users;
};

struct Room : Heard<AnyRoom<LMRTCRoom>, LMRTCRoomEventDelegate> {
  using Heard::Heard;
  std::string sessionId() const override { return "session of " + name; }
  std::shared_ptr<LMRTCLocalUser> localUser() const override { return me; }
  std::vector<std::string> otherRoomIdArray() const override { return others; }
  InputStreams getLiveStreams() const override { return live; }
  std::shared_ptr<LMRTCCDNInputStream> getCDNStream() const override { return cdn; }
  void muteAllRemoteAudio(bool mute) override { say(__func__, mute); }
  void setReceivedAudioBufferCallback(Sound hook) override { keep(received, hook, __func__); }

  std::shared_ptr<LocalUser> me = std::make_shared<LocalUser>(context);
  std::vector<std::string> others;
  InputStreams live;
  std::shared_ptr<LMRTCCDNInputStream> cdn;
  Cell<Sound> received;
};

using OtherRoom = Heard<AnyRoom<LMRTCOtherRoom>, LMRTCOtherRoomEventDelegate>;

struct EffectManager : Fake<LMRTCAudioEffectManager> {
  using Fake::Fake;
  void playEffect(Int id, Text file, Int loops, bool sent) override { say(__func__, id, file, loops, sent); }
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

struct Mixer : Heard<Fake<LMRTCAudioMixer>, LMRTCAudioMixerAudioPlayDelegate> {
  using Heard::Heard;
  bool startMixingWithURL(Text url, bool playback, Int mode, std::uint64_t loops) override {
    return say(__func__, url, playback, mode, loops), accepts;
  }
  void pause() override { say(__func__); }
  void resume() override { say(__func__); }
  void stop() override { say(__func__); }
  void setMixingVolume(std::uint64_t volume) override { mixing = volume; }
  std::uint64_t mixingVolume() const override { return mixing; }
  void setPlayingVolume(std::uint64_t volume) override { playing = volume; }
  std::uint64_t playingVolume() const override { return playing; }
  void setPlayProgress(double progress) override { say(__func__, progress); }

  std::atomic<bool> accepts = true;  ///< the answer to a start
  std::atomic<std::uint64_t> mixing = 100, playing = 100;
};

struct Engine : Heard<Fake<LMRTCEngine>, LMRTCEngineEventDelegate> {
  using Heard::Heard;
  using Status = std::weak_ptr<LMRTCStatusReportDelegate>;
  using Probe = std::weak_ptr<LMRTCProbeTestDelegate>;
  using File = std::shared_ptr<LMRTCFileVideoOutputStream>;

  void setMediaServerUrl(Text url) override { say(__func__, url); }
  void initWithConfig(const LMRTCConfig& c) override {
    say(__func__, c.isEnableAutoReconnect(), c.enableSRTP(), c.statusReportInterval(),
        c.enableMixWithOthers(), c.enableVersionMismatch());
  }
  void unInit() override { say(__func__); }
  void joinRoom(Text id, const LMRTCRoomConfig& c, JoinCompletion done) override {
    const auto join = [done, room = std::weak_ptr(nextRoom.get())](Int code) { done(code, room.lock()); };
    ask(join, __func__, id, c.liveType(), c.roomType(), c.roleType(), c.joinRoomType());
  }
  void leaveRoom(Completion done) override { ask(done, __func__); }
  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const override { return microphone; }
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const override { return camera; }
  void enableSpeaker(bool enabled) override { say(__func__, enabled); }
  void setStatusReportDelegate(Status value) override { keep(statusDelegate, value, __func__); }
  void joinOtherRoom(Text id, JoinOtherCompletion done) override {
    ask([done, room = nextOtherRoom.get()](Int code) { done(code, room); }, __func__, id);
  }
  void leaveOtherRoom(Text id, bool end, LeaveOtherCompletion done) override { ask(done, __func__, id, end); }
  File createFileVideoOutputStream(Text url, bool replaceAudio, bool playback, Text tag,
                                   const LMRTCVideoStreamConfig&) override {
    return say(__func__, url, replaceAudio, playback, tag), nextFile.get();
  }
  std::shared_ptr<LMRTCAudioEffectManager> audioEffectManager() const override { return effects; }
  void startEchoTest(double seconds) override { say(__func__, seconds); }
  void stopEchoTest() override { say(__func__); }
  void setProbeTestDelegate(Probe value) override { keep(probeDelegate, value, __func__); }
  void startRTCProbeTest(Completion done) override { ask(done, __func__); }
  void stopRTCProbeTest(Completion done) override { ask(done, __func__); }
  void preconnectMediaServer() override { say(__func__); }

  /// What joins deliver, whatever their code, and what other joins and file streams deliver.
  Cell<std::shared_ptr<LMRTCRoom>> nextRoom;
  Cell<std::shared_ptr<LMRTCOtherRoom>> nextOtherRoom;
  Cell<File> nextFile;
  Cell<Status> statusDelegate;  ///< installed, as `probeDelegate`
  Cell<Probe> probeDelegate;
  const std::shared_ptr<Microphone> microphone = std::make_shared<Microphone>(context, "me", "mic");
  const std::shared_ptr<Camera> camera = std::make_shared<Camera>(context, "me", "cam", 1);
  const std::shared_ptr<EffectManager> effects = std::make_shared<EffectManager>(context);
};

struct VideoView : Fake<LMRTCVideoView> {
  using Fake::Fake;
  void setFillMode(Int mode) override { say(__func__, mode); }
  void setIsPreviewMirror(bool mirror) override { say(__func__, mirror); }
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame&) override {}
};

/// An SDK that does nothing but write down what it is asked and answer when the test says so. The pixels are
/// for tests on the in-process SDK.
struct Provider : LMRTCProvider {
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
    context->trace->add("-> createVideoView " + word(frame));
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
