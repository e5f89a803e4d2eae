#pragma once

#include <gtest/gtest.h>

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
#include "LumoRTCLocal/server/LocalCodes.h"

using namespace std::chrono_literals;
using Trace = std::vector<std::string>;
using ParticipantPtr = std::shared_ptr<LumoRTCLocal::Participant>;

/// Writes every event as one line, with what the room's mirror says at that moment.
class EventRecorder : public LMRTCRoomEventDelegate, public LMRTCEngineEventDelegate {
 public:
  using User = std::shared_ptr<LMRTCRemoteUser>;
  using Stream = std::shared_ptr<LMRTCInputStream>;

  explicit EventRecorder(Trace& trace) : trace_(trace) {}

  std::weak_ptr<LMRTCRoom> room;
  std::function<void()> onEvent;  ///< after each line

  void didJoinUser(const User& user) override { line("joined", user); }
  void didLeaveUser(const User& user) override { line("left", user); }
  void didOfflineUser(const User& user) override { line("offline", user); }
  void didReportFirstFrame(const Stream& stream, std::int64_t) override { line("first", {stream}); }
  void didPublishStreams(const Streams& streams) override { line("published", streams); }
  void didUnpublishStreams(const Streams& streams) override { line("unpublished", streams); }
  void didPublishLiveStreams(const Streams& streams) override { line("live", streams); }
  void didUnpublishLiveStreams(const Streams& streams) override { line("live ended", streams); }
  void didPublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>&) override { line("cdn"); }
  void didUnpublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>&) override { line("cdn ended"); }
  void didAudioMute(const Stream& stream, bool muted) override {
    line(muted ? "muted" : "unmuted", {stream});
  }
  void didVideoEnable(const Stream& stream, bool on) override { line(on ? "enabled" : "disabled", {stream}); }
  void didSwitchRoleWithUser(const User& user, std::int64_t role) override {
    line("role " + std::to_string(role), user);
  }
  void didKicked(const std::string& roomId, std::int64_t reason) override {
    const bool isIn = room.lock() && room.lock()->localUser();
    line("kicked " + roomId + " " + std::to_string(reason) + (isIn ? " in" : " out"));
  }
  void didReceiveMessage(const std::string&) override {}
  void didReceiveSEI(const std::string&, const std::string&) override {}
  void didReceiveLiveStreamSEI(const std::string&) override {}
  void didRequestJoinOtherRoom(const std::string&, const std::string&, const std::string&) override {}
  void didCancelRequestOtherRoom(const std::string&, const std::string&, const std::string&) override {}
  void didResponseJoinOtherRoom(const std::string&, const std::string&, const std::string&,
                                const std::string&, bool, const std::string&) override {}
  void didFinishOtherRoom(const std::string&, const std::string&) override {}

 private:
  void line(const std::string& text) {
    trace_.push_back(text);
    if (onEvent) onEvent();
  }
  void line(const std::string& text, const User& user) {
    const auto joined = room.lock();
    const bool mirrored = joined && joined->getRemoteUser(*user->userId()) == user;
    line(text + " " + *user->userId() + (mirrored ? " (in the room)" : ""));
  }
  void line(const std::string& text, const Streams& streams) {
    std::string all = text;
    for (const Stream& stream : streams) {
      all += " " + stream->streamId() + (stream->mediaType() == LMRTCMediaTypeAudio ? ":a" : ":v");
      if (stream->resourceState() != LMRTCResourceStateNormal) all += "-off";
    }
    const auto joined = room.lock();
    const auto user = joined ? joined->getRemoteUser(streams.front()->userId()) : nullptr;
    line(all + " of " + std::to_string(user ? user->remoteStreams().size() : 0));
  }

  Trace& trace_;
};

/// LumoRTCLocal at manual pace with an initialised engine; nothing of it may outlive the test.
class LocalSdkTest : public ::testing::Test {
 protected:
  LocalSdkTest() {
    engine->setDelegate(recorder);
    engine->initWithConfig(LMRTCConfig());
  }

  ~LocalSdkTest() override {
    recorder->onEvent = nullptr;
    const std::weak_ptr<LMRTCEngine> weakEngine = engine;
    const std::weak_ptr<LMRTCRoom> weakRoom = room;
    local->setSpeaker({});
    local->uninstall();
    local->advance(0us);
    room.reset();
    engine.reset();
    local.reset();
    EXPECT_TRUE(weakEngine.expired());
    EXPECT_TRUE(weakRoom.expired());
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
  std::int64_t publish(const LMRTCLocalUser::OutputStreams& streams) {
    return answerOf([&](auto done) { user()->publishStreams(streams, plain(done)); });
  }
  std::int64_t unpublish(const LMRTCLocalUser::OutputStreams& streams) {
    return answerOf([&](auto done) { user()->unpublishStreams(streams, plain(done)); });
  }
  std::int64_t subscribe(const LMRTCLocalUser::InputStreams& streams,
                         const LMRTCLocalUser::InputStreams& tiny = {}) {
    return answerOf([&](auto done) { user()->subscribeStream(streams, tiny, plain(done)); });
  }
  std::int64_t unsubscribe(const LMRTCLocalUser::InputStreams& streams) {
    return answerOf([&](auto done) { user()->unsubscribeStreams(streams, plain(done)); });
  }

  std::shared_ptr<LMRTCLocalUser> user() const { return room->localUser(); }
  std::shared_ptr<LMRTCAudioOutputStream> microphone() const { return engine->defaultAudioStream(); }
  std::shared_ptr<LMRTCCameraVideoOutputStream> camera() const { return engine->defaultVideoStream(); }

  ParticipantPtr add(const std::string& userId, LumoRTCLocal::ParticipantOptions options = {}) {
    const auto result = local->join("r", userId, options);
    EXPECT_EQ(0, result.code) << result.message;
    return result.participant;
  }
  ParticipantPtr addPublishing(const std::string& userId,
                               LumoRTCLocal::Media media = LumoRTCLocal::Media::audioAndVideo) {
    const auto participant = add(userId);
    EXPECT_EQ(0, participant->publish(kLMRTCDefaultStreamTag, media));
    return participant;
  }
  /// The n-th stream of a user, in the order of publication.
  std::shared_ptr<LMRTCInputStream> stream(const std::string& userId, std::size_t n = 0) const {
    return room->getRemoteUser(userId)->remoteStreams().at(n);
  }
  std::shared_ptr<LMRTCVideoInputStream> video(const std::string& userId, std::size_t n = 0) const {
    return std::dynamic_pointer_cast<LMRTCVideoInputStream>(stream(userId, n));
  }

  Trace takeTrace() { return std::exchange(trace, {}); }

  /// For completions that tell of success and code, and what has come of it.
  template <class Done>
  static auto plain(Done done) {
    return [done](bool success, std::int64_t code, const auto&...) {
      EXPECT_EQ(code == 0, success);
      done(code);
    };
  }

  Trace trace;
  std::shared_ptr<LumoRTCLocal> local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});
  std::shared_ptr<LMRTCEngine> engine = LMRTCEngine::sharedInstance();
  std::shared_ptr<LMRTCRoom> room;
  std::shared_ptr<EventRecorder> recorder = std::make_shared<EventRecorder>(trace);
};
