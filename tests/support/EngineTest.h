#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <source_location>
#include <sstream>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/views/LMRTCIWViewDelegate.h"
#include "tests/support/FakeSdk.h"

namespace lumo {

/// Every callback of the listener, in the order of the declarations.
#define LUMO_CALLBACKS                                                                                       \
  onRoomJoined, onRoomLeft, onKicked, onSubRoomBanded, onUserJoined, onUserLeft, onUserOffline,              \
      onRemoteLiveRoleSwitched, onRemotePublished, onRemoteUnpublished, onRemoteStateChanged,                \
      onRemoteFirstFrame, onRemoteCustomStreamPublished, onRemoteCustomStreamUnpublished,                    \
      onRemoteCustomStreamStateChanged, onRemoteCustomStreamFirstFrame, onRemoteLiveMixPublished,            \
      onRemoteLiveMixUnpublished, onRemoteLiveMixFirstFrame, onRemoteLiveMixInnerCdnStreamPublished,         \
      onRemoteLiveMixInnerCdnStreamUnpublished, onPublished, onUnpublished, onSubscribed, onUnsubscribed,    \
      onLiveMixSubscribed, onLiveMixUnsubscribed, onCameraEnabled, onCameraSwitched, onLiveMixLayoutModeSet, \
      onLiveMixRenderModeSet, onLiveMixBackgroundColorSet, onLiveMixCustomLayoutsSet,                        \
      onLiveMixCustomAudiosSet, onLiveMixAudioBitrateSet, onLiveMixVideoBitrateSet,                          \
      onLiveMixVideoResolutionSet, onLiveMixVideoFpsSet, onLiveCdnAdded, onLiveCdnRemoved,                   \
      onLiveMixInnerCdnStreamEnabled, onLiveMixInnerCdnStreamSubscribed,                                     \
      onLiveMixInnerCdnStreamUnsubscribed, onLocalLiveMixInnerCdnVideoResolutionSet,                         \
      onLocalLiveMixInnerCdnVideoFpsSet, onLiveRoleSwitched, onAudioEffectCreated, onAudioMixingStarted,     \
      onAudioMixingPaused, onAudioMixingResume, onAudioMixingStopped, onAudioMixingProgressReported,         \
      onAudioMixingFinished, onCustomStreamPublished, onCustomStreamUnpublished,                             \
      onCustomStreamPublishFinished, onCustomStreamSubscribed, onCustomStreamUnsubscribed,                   \
      onJoinSubRoomRequested, onJoinSubRoomRequestCanceled, onJoinSubRoomRequestResponded,                   \
      onJoinSubRoomRequestReceived, onCancelJoinSubRoomRequestReceived,                                      \
      onJoinSubRoomRequestResponseReceived, onSubRoomJoined, onSubRoomLeft, onSubRoomDisband,                \
      onWatermarkSet, onWatermarkRemoved, onNetworkProbeStarted, onNetworkProbeStopped, onSeiEnabled,        \
      onSeiReceived, onLiveMixSeiReceived
#define LUMO_TEXT_OF(...) #__VA_ARGS__
#define LUMO_TEXT(...) LUMO_TEXT_OF(__VA_ARGS__)

/// Calls `visit(name, field)` for every callback of the listener. Does not compile when one is missing above.
template <class Visitor>
void forEachCallback(LMRTCIWEngineDelegate& host, const Visitor& visit) {
  auto& [LUMO_CALLBACKS] = host;
  std::istringstream names(LUMO_TEXT(LUMO_CALLBACKS));
  const auto visitNext = [&](auto& field) {
    std::string name;
    std::getline(names >> std::ws, name, ',');
    visit(name, field);
  };
  [&](auto&... fields) { (visitNext(fields), ...); }(LUMO_CALLBACKS);
}

/// A view of the host that writes down what it is told.
struct RecordingView : fake::Fake<LMRTCIWViewDelegate> {
  using Fake::Fake;
  std::int64_t getViewType() const override { return LMRTCIWViewTypeFlutter; }
  void setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>& s) override { say(__func__, s); }
  void removeLocalView() override { say(__func__); }
  void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>& s) override { say(__func__, s); }
  void removeRemoteView() override { say(__func__); }
  void setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>& s) override { say(__func__, s); }
  void removeInnerCdnView() override { say(__func__); }
};

constexpr auto kNotJoined = LMRTCWrapperCodeLocalUserNotJoined;
constexpr auto kBadParameter = LMRTCWrapperCodeParameterError;
constexpr auto kNobody = LMRTCWrapperCodeRemoteUserNotJoined;
constexpr auto kNoStream = LMRTCWrapperCodeStreamNotExist;
constexpr auto kNotSupported = LMRTCWrapperCodeInterfaceNotSupport;
constexpr auto kDestroyed = LMRTCWrapperCodeEngineDestroyed;
const std::string kNoUser = "E: room is nil or localUser is nil";
const std::string kNoSetup = kNoUser + " or iwRoomSetup is nil";
const std::string kNoEngine = "E: rtcEngine is nil";

/// An engine on the SDK double, with a listener that has every callback. Log, console, SDK and listener write
/// to one trace. The end of a test destroys the engine and fails when anything of it is still alive.
class EngineTest : public ::testing::Test {
 protected:
  using Input = std::shared_ptr<LMRTCInputStream>;
  using Inputs = fake::InputStreams;
  using Lines = std::vector<std::string>;
  using Place = std::source_location;

  EngineTest() {
    LMRTCProvider::install(sdk);
    LMFwLog::getInstance().setSink([log = trace](const LMFwLogEntry& entry) { log->add(text(entry)); });
    Console::setSink([log = trace](const std::string& line) { log->add("console " + line); });
    MainQueue::setOwnThread(false);
    sdk->engine->nextRoom.set(room);
    engine = LMRTCIWEngine::create(setup);
    listen();
    trace->take();
  }

  /// Runs after the members of a derived fixture are gone.
  ~EngineTest() override {
    if (engine) engine->destroy();
    sdk->context->owed.clear();
    MainQueue::runPending();
    const std::weak_ptr<LMRTCIWEngine> gone = std::exchange(engine, nullptr);
    EXPECT_TRUE(gone.expired()) << "somebody keeps the engine alive";

    LMFwLog::getInstance().setSink({});
    Console::resetSink();
    MainQueue::setOwnThread(true);
    LMRTCProvider::install(nullptr);
    sdk = nullptr;
    room = nullptr;
    EXPECT_EQ(0, fake::Counted::alive()) << "somebody keeps SDK objects alive";
  }

  /// Installs a new listener, with every callback but the named ones.
  void listen(const std::set<std::string>& without = {}) {
    host = std::make_shared<LMRTCIWEngineDelegate>();
    forEachCallback(*host, [this, &without](const std::string& name, auto& field) {
      if (!without.contains(name)) record(field, name);
    });
    engine->setEngineDelegate(host);
  }

  /// Checks the outcome of a call and its whole trace.
  template <class Outcome>
  void expect(std::type_identity_t<Outcome> expected, const Outcome& actual, const Lines& lines,
              const Place& place = Place::current()) const {
    const ::testing::ScopedTrace scope(place.file_name(), static_cast<int>(place.line()), "");
    EXPECT_EQ(expected, actual);
    EXPECT_EQ(Trace::text(lines), trace->take());
  }

  /// Completes the oldest call of the SDK and checks the whole trace of that.
  void complete(std::int64_t code, const Lines& lines, const Place& place = Place::current()) const {
    trace->take();
    expect(true, sdk->complete(code), lines, place);
  }

  /// The same for a call that ends in a result line and in the callback: `result` is "method callback keys",
  /// and `arguments` are those before the code.
  void answer(std::int64_t code, const std::string& result, const std::string& arguments = "",
              const Place& place = Place::current()) const {
    std::istringstream parts(result);
    std::string method, callback, keys;
    std::getline(parts >> method >> callback >> std::ws, keys);
    const std::string line = code == 0 ? "R " : "E ", values = arguments.empty() ? "" : " " + arguments;
    complete(code,
             {format("%@%@ callback:%@, code:%@, %@", {line, method, callback, code, keys}),
              format("host %@%@ %@ %@", {callback, values, code, sdk->codeDesc(code)})},
             place);
  }

  /// Joins "r1", with the trace of the completion alone.
  void replay(std::int64_t role = LMRTCIWRoleMeetingMember) {
    EXPECT_EQ(0, engine->joinRoom("r1", roomSetup(role)));
    trace->take();
    EXPECT_TRUE(sdk->complete());
  }
  /// Joins "r1" and forgets the trace of it.
  void join(std::int64_t role = LMRTCIWRoleMeetingMember) {
    replay(role);
    trace->take();
  }
  static std::shared_ptr<LMRTCIWRoomSetup> roomSetup(std::int64_t role) {
    return std::make_shared<LMRTCIWRoomSetup>(LMRTCIWRoomSetup{.role = role});
  }

  /// Makes a fake.
  template <class Object, class... Arguments>
  std::shared_ptr<Object> make(Arguments&&... arguments) const {
    return std::make_shared<Object>(sdk->context, std::forward<Arguments>(arguments)...);
  }
  /// A stream of any media type and kind; of the SDK's video stream class when it is video.
  Input stream(const std::string& user, const std::string& tag, fake::Int type, fake::Int kind = 1,
               fake::Int state = 1) const {
    if (type == 1) return make<fake::VideoInput>(user, tag, type, kind, state);
    return make<fake::OddInput>(user, tag, type, kind, state);
  }
  Input audio(const std::string& user) const { return make<fake::AudioInput>(user); }
  Input video(const std::string& user, fake::Int state = 1) const {
    return stream(user, kLMRTCDefaultStreamTag, 1, 0, state);
  }
  static std::shared_ptr<LMRTCRemoteUser> user(std::optional<std::string> id, Inputs streams = {}) {
    return std::make_shared<fake::RemoteUser>(std::move(id), std::move(streams));
  }
  std::shared_ptr<RecordingView> view(const std::string& name) const { return make<RecordingView>(name); }

  std::shared_ptr<fake::Provider> sdk = std::make_shared<fake::Provider>();
  std::shared_ptr<Trace> trace = sdk->context->trace;
  std::shared_ptr<fake::Room> room = std::make_shared<fake::Room>(sdk->context, "r1");
  std::shared_ptr<LMRTCIWEngineSetup> setup = std::make_shared<LMRTCIWEngineSetup>();
  std::shared_ptr<LMRTCIWEngine> engine;
  std::shared_ptr<LMRTCIWEngineDelegate> host;

 private:
  static std::string text(const LMFwLogEntry& entry) {
    EXPECT_EQ(1, entry.type);
    return format("log %@ %@%@%@", {entry.level, entry.tag, entry.keys.empty() ? "" : " ", entry.keys});
  }

  template <class... Parameters>
  void record(std::function<void(Parameters...)>& field, const std::string& name) const {
    field = [log = trace, name](const Parameters&... parameters) {
      log->add((("host " + name) + ... + (" " + fake::word(parameters))));
    };
  }
};

}  // namespace lumo
