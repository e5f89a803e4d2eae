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

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOtherRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
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
using VideoInput = VisibleInput<LMRTCVideoInputStream>;
using CdnInput = VisibleInput<LMRTCCDNInputStream>;
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
      : Stream(std::move(context),
               {.userId = "me", .tag = std::move(tag), .mediaType = LMRTCMediaTypeVideo}) {}
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>&) override { call("setVideoView"); }
  void setVideoConfig(const LMRTCVideoStreamConfig&) override { call("setVideoConfig"); }
  void stop() override { call("stop"); }
};

class LiveInfo : public LMRTCLiveInfo, Counted {};

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

  const std::string& userId() const override { return id_; }
  OutputStreams streams() const override { return {}; }
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

 private:
  template <class Streams>
  static std::string ids(const Streams& streams) {
    std::vector<std::string> ids;
    for (const auto& stream : streams)
      ids.push_back(stream->streamId() + (stream->mediaType() == 1 ? ":v" : ":a"));
    return lumo::format("%@", {ids});
  }
  void answer(const std::string& what, Completion done) {
    context_->call("%@", {what});
    context_->owe([done = std::move(done)](std::int64_t code) { done(code == 0, code); });
  }
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
};

using OtherRoom = BaseRoom<LMRTCOtherRoom, LMRTCOtherRoomEventDelegate>;

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
  void leaveRoom(Completion done) override {
    context_->call("leaveRoom");
    context_->owe(std::move(done));
  }
  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const override { return microphone_; }
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const override { return camera_; }

 private:
  const Shared context_;
  const std::shared_ptr<Microphone> microphone_ = std::make_shared<Microphone>(context_);
  const std::shared_ptr<Camera> camera_ = std::make_shared<Camera>(context_);
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

  std::shared_ptr<LMRTCEngine> sharedEngine() override { return engine; }
  std::string codeDesc(std::int64_t code) override { return code == 0 ? "ok" : "sdk" + std::to_string(code); }
  std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect& frame) override {
    context->call("createVideoView %@,%@ %@x%@", {frame.x, frame.y, frame.width, frame.height});
    return std::make_shared<VideoView>(context, frame);
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
