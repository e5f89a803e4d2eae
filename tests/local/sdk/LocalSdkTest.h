#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "LumoRTCLocal/server/LocalCodes.h"

using namespace std::chrono_literals;
using Trace = std::vector<std::string>;
using ParticipantPtr = std::shared_ptr<LumoRTCLocal::Participant>;

using LocalUser = LMRTCLocalUser;
using Inputs = LocalUser::InputStreams;
using Outputs = LocalUser::OutputStreams;

/// Writes every event as one line: whose it is, of which streams, and how many streams of that user the
/// room's mirror has at that moment.
class EventRecorder : public LMRTCRoomEventDelegate, public LMRTCEngineEventDelegate {
 public:
  using User = std::shared_ptr<LMRTCRemoteUser>;
  using Stream = std::shared_ptr<LMRTCInputStream>;
  using Text = const std::string&;

  std::weak_ptr<LMRTCRoom> room;
  Trace trace;
  std::function<void()> onEvent;  ///< after each line

  void didJoinUser(const User& user) override { line("joined", *user->userId()); }
  void didLeaveUser(const User& user) override { line("left", *user->userId()); }
  void didOfflineUser(const User& user) override { line("offline", *user->userId()); }
  void didReportFirstFrame(const Stream&, std::int64_t) override {}
  void didPublishStreams(const Streams& streams) override { line("published", streams); }
  void didUnpublishStreams(const Streams& streams) override { line("unpublished", streams); }
  void didPublishLiveStreams(const Streams& streams) override { line("live", streams); }
  void didUnpublishLiveStreams(const Streams& streams) override { line("live ended", streams); }
  void didPublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>&) override { line("cdn"); }
  void didUnpublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>&) override { line("cdn ended"); }
  void didAudioMute(const Stream& stream, bool on) override { line(on ? "muted" : "unmuted", {stream}); }
  void didVideoEnable(const Stream& stream, bool on) override { line(on ? "enabled" : "disabled", {stream}); }
  void didSwitchRoleWithUser(const User& user, std::int64_t role) override {
    line("role " + std::to_string(role), *user->userId());
  }
  void didKicked(Text roomId, std::int64_t reason) override {
    line("kicked " + roomId + " " + std::to_string(reason) + (room.lock()->localUser() ? " in" : " out"));
  }
  void didReceiveMessage(Text) override {}
  void didReceiveSEI(Text, Text) override {}
  void didReceiveLiveStreamSEI(Text) override {}
  void didRequestJoinOtherRoom(Text, Text, Text) override {}
  void didCancelRequestOtherRoom(Text, Text, Text) override {}
  void didResponseJoinOtherRoom(Text, Text, Text, Text, bool, Text) override {}
  void didFinishOtherRoom(Text, Text) override {}

 private:
  void line(Text text) {
    trace.push_back(text);
    if (onEvent) onEvent();
  }
  void line(Text text, Text userId) {
    const auto user = room.lock()->getRemoteUser(userId);
    line(text + " " + userId + (user ? " of " + std::to_string(user->remoteStreams().size()) : ""));
  }
  void line(std::string text, const Streams& streams) {
    for (const Stream& stream : streams) {
      text += stream->mediaType() == LMRTCMediaTypeAudio ? " audio" : " video";
      if (stream->resourceState() != LMRTCResourceStateNormal) text += "-off";
    }
    line(text, streams.front()->userId());
  }
};

/// LumoRTCLocal at manual pace with an initialised engine; nothing of it may outlive the test.
class LocalSdkTest : public ::testing::Test {
 protected:
  LocalSdkTest() {
    engine->setDelegate(recorder);
    engine->initWithConfig(LMRTCConfig());
  }

  ~LocalSdkTest() override {
    const std::weak_ptr<LMRTCEngine> weakEngine = engine;
    const std::weak_ptr<LMRTCRoom> weakRoom = room;
    const auto token = std::make_shared<int>();
    if (room && user()) user()->publishStreams({microphone()}, [token](bool, std::int64_t) {});
    local->setSpeaker({});
    local->uninstall();
    room.reset();
    engine.reset();
    local.reset();
    EXPECT_TRUE(weakEngine.expired());
    EXPECT_TRUE(weakRoom.expired());
    EXPECT_EQ(1, token.use_count()) << "what has not run by then keeps nothing";
  }

  static LMRTCRoomConfig liveConfig(std::int64_t role) {
    LMRTCRoomConfig config;
    config.setRoomType(LMRTCRoomTypeLive);
    config.setRoleType(role);
    return config;
  }

  /// Calls an operation whose completion is told through `done`, and pumps until it has come.
  template <class Operation>
  std::int64_t answerOf(Operation operation) {
    std::vector<std::int64_t> codes;
    operation([&codes](std::int64_t code) { codes.push_back(code); });
    EXPECT_TRUE(codes.empty()) << "completed inside the call";
    local->advance(0us);
    EXPECT_EQ(1u, codes.size());
    return codes.empty() ? -1 : codes.front();
  }

  std::int64_t join(const std::string& roomId, const LMRTCRoomConfig& config = {}) {
    return answerOf([&](auto done) {
      engine->joinRoom(roomId, config, [this, done](std::int64_t code, const auto& joined) {
        EXPECT_EQ(code == 0, joined != nullptr);
        if (joined) joined->setDelegate(recorder);
        if (joined) recorder->room = room = joined;
        done(code);
      });
    });
  }
  std::int64_t leave() {
    return answerOf([&](auto done) { engine->leaveRoom(done); });
  }
  /// The answer to an operation whose completion tells of success and code.
  template <class Operation, class... Arguments>
  std::int64_t ask(Operation operation, const Arguments&... arguments) {
    return answerOf([&](auto done) {
      std::invoke(operation, arguments..., [done](bool success, std::int64_t code, const auto&...) {
        EXPECT_EQ(code == 0, success);
        done(code);
      });
    });
  }
  std::int64_t publish(const Outputs& streams) { return ask(&LocalUser::publishStreams, user(), streams); }
  std::int64_t unpublish(const Outputs& streams) {
    return ask(&LocalUser::unpublishStreams, user(), streams);
  }
  std::int64_t subscribe(const Inputs& streams, const Inputs& tiny = {}) {
    return ask(&LocalUser::subscribeStream, user(), streams, tiny);
  }
  std::int64_t unsubscribe(const Inputs& streams) {
    return ask(&LocalUser::unsubscribeStreams, user(), streams);
  }

  std::shared_ptr<LMRTCLocalUser> user() const { return room->localUser(); }
  std::shared_ptr<LMRTCAudioOutputStream> microphone() const { return engine->defaultAudioStream(); }
  std::shared_ptr<LMRTCCameraVideoOutputStream> camera() const { return engine->defaultVideoStream(); }

  ParticipantPtr add(const std::string& userId, LumoRTCLocal::ParticipantOptions options = {}) {
    const auto result = local->join("r", userId, options);
    EXPECT_EQ(0, result.code) << result.message;
    return result.participant;
  }
  ParticipantPtr addPublishing(const std::string& userId, LumoRTCLocal::ParticipantOptions options = {}) {
    const auto participant = add(userId, options);
    EXPECT_EQ(0, participant->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo));
    return participant;
  }
  /// The n-th stream of a user, in the order of publication.
  std::shared_ptr<LMRTCInputStream> stream(const std::string& userId, std::size_t n = 0) const {
    return room->getRemoteUser(userId)->remoteStreams().at(n);
  }
  static void show(const std::shared_ptr<LMRTCInputStream>& stream,
                   const std::shared_ptr<LMRTCVideoView>& in) {
    std::dynamic_pointer_cast<LMRTCVideoInputStream>(stream)->setVideoView(in);
  }

  Trace takeTrace() { return std::exchange(recorder->trace, {}); }

  std::shared_ptr<LumoRTCLocal> local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});
  std::shared_ptr<LMRTCEngine> engine = LMRTCEngine::sharedInstance();
  std::shared_ptr<LMRTCRoom> room;
  std::shared_ptr<lumo::LocalVideoView> view = std::make_shared<lumo::LocalVideoView>();
  std::shared_ptr<lumo::LocalVideoView> preview = std::make_shared<lumo::LocalVideoView>();
  std::shared_ptr<EventRecorder> recorder = std::make_shared<EventRecorder>();
};
