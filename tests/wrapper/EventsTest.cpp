#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

const std::string kNoRoom = "-E msg:room is nil or localUser is nil";

/// What one event has to leave in the trace.
struct Event {
  std::string name;
  std::function<void()> fire;
  std::string console;                 ///< after "LMRTCIWEngine "; empty: no line
  std::string guard;                   ///< method of the error line without a room; empty: nothing is checked
  std::vector<std::string> listening;  ///< after the console line, with every callback set
  std::vector<std::string> deaf;       ///< the same with no callback set
  std::string guardText = kNoRoom;
};

class EventsTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    join();
    events = room->events();
    // Joining other rooms is what gives an SDK this listener.
    subEvents =
        std::shared_ptr<LMRTCOtherRoomEventDelegate>(engine, (LMRTCOtherRoomEventDelegate*)engine.get());
    engineEvents = sdk->engine->events();
  }

  void TearDown() override {
    events = nullptr;
    subEvents = nullptr;
    engineEvents = nullptr;
    sub = nullptr;
    EngineTest::TearDown();
  }

  void deafen() {
    host = std::make_shared<LMRTCIWEngineDelegate>();
    engine->setEngineDelegate(host);
  }

  void expect(const Event& event, const std::vector<std::string>& lines) {
    SCOPED_TRACE(event.name);
    std::string expected = event.console.empty() ? "" : "console LMRTCIWEngine " + event.console + "\n";
    for (const auto& line : lines) expected += line + "\n";
    trace->take();
    event.fire();
    EXPECT_EQ(expected, trace->take());
  }

  /// Every event with a listener, without callbacks, and without a room. Rows hold streams; they end with the
  /// call.
  void check(const std::vector<Event>& rows) {
    for (const auto& row : rows) expect(row, row.listening);
    deafen();
    for (const auto& row : rows) expect(row, row.deaf);
    listen();
    engine->setRoom(nullptr);
    for (const auto& row : rows) {
      if (row.guard.empty()) {
        expect(row, row.listening);
      } else {
        expect(row, {"log 2 IW/RTC-" + row.guard + row.guardText});
      }
    }
    room->me = nullptr;
    engine->setRoom(room);
    for (const auto& row : rows) {
      if (row.guardText == kNoRoom && !row.guard.empty())
        expect(row, {"log 2 IW/RTC-" + row.guard + kNoRoom});
    }
  }

  static std::string listener(const std::string& method, const std::string& keys = {}) {
    return "log 4 IW/RTC-" + method + "-L" + (keys.empty() ? "" : " " + keys);
  }

  std::shared_ptr<LMRTCRoomEventDelegate> events;
  std::shared_ptr<LMRTCOtherRoomEventDelegate> subEvents;
  std::shared_ptr<LMRTCEngineEventDelegate> engineEvents;
  std::shared_ptr<LMRTCOtherRoom> sub = std::make_shared<fake::OtherRoom>(sdk->context, "s1");
};

TEST_F(EventsTest, MainRoomUsers) {
  const auto u1 = user("u1");
  check({
      {"didJoinUser",
       [&] { events->didJoinUser(u1); },
       "didJoinUser: u1",
       "didJoinUser",
       {listener("onUserJoined", "room:r1,userId:u1"), "host onUserJoined r1 u1"},
       {listener("onUserJoined", "room:r1,userId:u1")}},
      {"didLeaveUser",
       [&] { events->didLeaveUser(u1); },
       "didLeaveUser: u1",
       "didLeaveUser",
       {listener("onUserLeft", "room:r1,userId:u1"), "host onUserLeft r1 u1"},
       {listener("onUserLeft", "room:r1,userId:u1")}},
      {"didOfflineUser",
       [&] { events->didOfflineUser(u1); },
       "didOfflineUser: u1",
       "didLeaveUser",
       {listener("onUserOffline", "room:r1,userId:u1"), "host onUserOffline r1 u1"},
       {listener("onUserOffline", "room:r1,userId:u1")}},
      {"didKicked",
       [&] { engineEvents->didKicked("other", 3); },
       "didKicked: other reason: 3",
       "didKicked",
       {listener("onKicked", "room:other"), "host onKicked other 3"},
       {}},
      {"didReceiveMessage", [&] { events->didReceiveMessage("hello"); }, "", "", {}, {}},
  });
}

TEST_F(EventsTest, AUserWithoutAnIdIsNotAnnounced) {
  events->didJoinUser(user(std::nullopt));
  EXPECT_TRACE("console LMRTCIWEngine didJoinUser: (null)",
               "log 2 IW/RTC-didJoinUser-E msg:room is nil or localUser is nil");
}

TEST_F(EventsTest, RolesAndTexts) {
  const std::string noRoom = "-E msg:room is nil ";
  const auto u1 = user("u1");
  check({
      {"broadcaster",
       [&] { events->didSwitchRoleWithUser(u1, 0); },
       "didSwitchRoleWithUser: u1 roleType: 0",
       "didSwitchRoleWithUser",
       {listener("onRemoteLiveRoleSwitched", "roomId:r1,userId:u1,role:1"),
        "host onRemoteLiveRoleSwitched r1 u1 1"},
       {},
       noRoom},
      {"any other role",
       [&] { events->didSwitchRoleWithUser(u1, 7); },
       "didSwitchRoleWithUser: u1 roleType: 7",
       "didSwitchRoleWithUser",
       {listener("onRemoteLiveRoleSwitched", "roomId:r1,userId:u1,role:2"),
        "host onRemoteLiveRoleSwitched r1 u1 2"},
       {},
       noRoom},
      {"didReceiveSEI",
       [&] { events->didReceiveSEI("text", "u1"); },
       "didReceiveSEI: text userId: u1",
       "didReceiveSEI",
       {listener("onSeiReceived", "roomId:r1,userId:u1,sei:text"), "host onSeiReceived r1 u1 text"},
       {},
       noRoom},
      {"didReceiveLiveStreamSEI",
       [&] { events->didReceiveLiveStreamSEI("text"); },
       "didReceiveLiveStreamSEI: text",
       "",
       {listener("onLiveMixSeiReceived", "sei:text"), "host onLiveMixSeiReceived text"},
       {}},
      {"room:didReceiveSEI",
       [&] { subEvents->didReceiveSEI(sub, "text", "u1"); },
       "didReceiveSEI: text userId: u1",
       "",
       {listener("onSeiReceived", "roomId:s1,userId:u1,sei:text"), "host onSeiReceived s1 u1 text"},
       {}},
      {"room:didReceiveMessage",
       [&] { subEvents->didReceiveMessage(sub, "m"); },
       "room: s1 didReceiveMessage: m",
       "",
       {},
       {}},
  });
}

TEST_F(EventsTest, FirstFrames) {
  struct Row {
    Input stream;
    std::int64_t mediaType;
    std::string id;      ///< of the stream
    std::string method;  ///< empty: dropped
    std::string keys;    ///< with % for the room id
    std::string arguments;
  };
  const std::vector<Row> rows = {
      {audio("u1"), 0, "u1_LumoCloudRTC", "onRemoteFirstFrame", "room:%,userId:u1,type:0", "% u1 0"},
      {video("u1"), 1, "u1_LumoCloudRTC", "onRemoteFirstFrame", "room:%,userId:u1,type:1", "% u1 1"},
      {stream("u1", "t", 1), 1, "u1_t", "onRemoteCustomStreamFirstFrame", "room:%,userId:u1,tag:t,type:1",
       "% u1 t 1"},
      {stream("mix", "m", 1, 2), 1, "mix_m", "onRemoteLiveMixFirstFrame", "type:1", "1"},
      {video("u1"), 2, "u1_LumoCloudRTC", "", "", ""},
      {video("u1"), -1, "u1_LumoCloudRTC", "", "", ""},
      {stream("u1", "t", 1, 3), 1, "u1_t", "", "", ""},
  };
  std::vector<Event> events_;
  for (const Row& row : rows) {
    const auto in = [](std::string text, const std::string& roomId) {
      const auto place = text.find('%');
      return place == std::string::npos ? text : text.replace(place, 1, roomId);
    };
    const auto lines = [&](const std::string& roomId, bool heard) {
      std::vector<std::string> all;
      if (!row.method.empty()) all.push_back(listener(row.method, in(row.keys, roomId)));
      if (!row.method.empty() && heard) all.push_back("host " + row.method + " " + in(row.arguments, roomId));
      return all;
    };
    const std::string type = std::to_string(row.mediaType);
    events_.push_back({row.method + type, [&] { events->didReportFirstFrame(row.stream, row.mediaType); },
                       "didReportFirstFrame: " + row.id + " , media type: " + type, "didReportFirstFrame",
                       lines("r1", true), lines("r1", false)});
    // Sub-rooms log only what the listener hears.
    events_.push_back({"room " + row.method + type,
                       [&] { subEvents->didReportFirstFrame(sub, row.stream, row.mediaType); },
                       "room: s1 didReportFirstFrame: " + row.id + " mediaType: " + type,
                       "room:didReportFirstFrame:mediaType",
                       lines("s1", true),
                       {}});
  }
  check(events_);
}

TEST_F(EventsTest, PublicationsAreGroupedAndFollowedByTheStateOfEachStream) {
  const Inputs streams = {audio("u1"), stream("u1", "t", 1, 1, 0), video("u1", 0)};
  const std::string ids = "(u1_LumoCloudRTC, u1_t, u1_LumoCloudRTC)";
  const auto published = [](const std::string& roomId) {
    const std::string who = "room:" + roomId + ",userId:u1";
    return std::vector<std::string>{
        listener("onRemotePublished", who + ",type:2"),
        "host onRemotePublished " + roomId + " u1 2",
        listener("onRemoteCustomStreamPublished", who + ",tag:t,type:1"),
        "host onRemoteCustomStreamPublished " + roomId + " u1 t 1",
        listener("onRemoteStateChanged", who + ",type:0,disabled:0"),
        "host onRemoteStateChanged " + roomId + " u1 0 0",
        listener("onRemoteCustomStreamStateChanged", who + ",tag:t,type:1,disabled:1"),
        "host onRemoteCustomStreamStateChanged " + roomId + " u1 t 1 1",
        listener("onRemoteStateChanged", who + ",type:1,disabled:1"),
        "host onRemoteStateChanged " + roomId + " u1 1 1"};
  };
  const auto unpublished = [](const std::string& roomId) {
    const std::string who = "room:" + roomId + ",userId:u1";
    return std::vector<std::string>{listener("onRemoteUnpublished", who + ",type:2"),
                                    "host onRemoteUnpublished " + roomId + " u1 2",
                                    listener("onRemoteCustomStreamUnpublished", who + ",tag:t,type:1"),
                                    "host onRemoteCustomStreamUnpublished " + roomId + " u1 t 1"};
  };
  check({
      {"didPublishStreams",
       [&] { events->didPublishStreams(streams); },
       "didPublishStreams: " + ids,
       "didPublishStreams",
       published("r1"),
       {}},
      {"didUnpublishStreams",
       [&] { events->didUnpublishStreams(streams); },
       "didUnpublishStreams: " + ids,
       "didUnpublishStreams",
       unpublished("r1"),
       {}},
      {"room:didPublishStreams",
       [&] { subEvents->didPublishStreams(sub, streams); },
       "room: s1 didPublishStreams: " + ids,
       "room:didPublishStreams",
       published("s1"),
       {}},
      {"room:didUnpublishStreams",
       [&] { subEvents->didUnpublishStreams(sub, streams); },
       "room: s1 didUnpublishStreams: " + ids,
       "room:didUnpublishStreams",
       unpublished("s1"),
       {}},
      {"nothing",
       [&] { events->didPublishStreams({}); },
       "didPublishStreams: ()",
       "didPublishStreams",
       {},
       {}},
  });
}

TEST_F(EventsTest, AnUnsetCallbackSkipsOnlyItsOwnStep) {
  listen({"onRemotePublished", "onRemoteStateChanged"});
  events->didPublishStreams({audio("u1"), stream("u1", "t", 0)});
  EXPECT_TRACE("console LMRTCIWEngine didPublishStreams: (u1_LumoCloudRTC, u1_t)",
               listener("onRemoteCustomStreamPublished", "room:r1,userId:u1,tag:t,type:0"),
               "host onRemoteCustomStreamPublished r1 u1 t 0",
               listener("onRemoteCustomStreamStateChanged", "room:r1,userId:u1,tag:t,type:0,disabled:0"),
               "host onRemoteCustomStreamStateChanged r1 u1 t 0 0");
}

TEST_F(EventsTest, LiveMixPublicationsReportTheRoomAndUnpublicationsTheEvent) {
  room->live = {stream("mix", "m", 0, 2), stream("mix", "m", 1, 2)};
  const Inputs inEvent = {stream("mix", "m", 0, 2), audio("u1")};
  std::vector<Event> rows = {
      {"didPublishLiveStreams",
       [&] { events->didPublishLiveStreams(inEvent); },
       "didPublishLiveStreams: (mix_m, u1_LumoCloudRTC)",
       "didPublishLiveStreams",
       {listener("onRemoteLiveMixPublished", "type:2"), "host onRemoteLiveMixPublished 2"},
       {},
       kNoRoom + " or iwRoomSetup is nil"},
      {"didUnpublishLiveStreams",
       [&] { events->didUnpublishLiveStreams(inEvent); },
       "didUnpublishLiveStreams: (mix_m, u1_LumoCloudRTC)",
       "didUnpublishLiveStreams",
       {listener("onRemoteLiveMixUnpublished", "type:0"), "host onRemoteLiveMixUnpublished 0",
        listener("onRemoteLiveMixUnpublished", "type:0"), "host onRemoteLiveMixUnpublished 0"},
       {},
       kNoRoom + " or iwRoomSetup is nil"},
      {"didPublishCDNStream",
       [&] { events->didPublishCDNStream(nullptr); },
       "",
       "",
       {"log 4 IW/RTC-LMRTCIWEngine didPublishCDNStream-S",
        listener("onRemoteLiveMixInnerCdnStreamPublished"), "host onRemoteLiveMixInnerCdnStreamPublished"},
       {"log 4 IW/RTC-LMRTCIWEngine didPublishCDNStream-S"}},
      {"didUnpublishCDNStream",
       [&] { events->didUnpublishCDNStream(nullptr); },
       "",
       "",
       {"log 4 IW/RTC-LMRTCIWEngine didUnpublishCDNStream-S",
        listener("onRemoteLiveMixInnerCdnStreamUnpublished"),
        "host onRemoteLiveMixInnerCdnStreamUnpublished"},
       {"log 4 IW/RTC-LMRTCIWEngine didUnpublishCDNStream-S"}},
  };
  engine->setIwRoomSetup(nullptr);
  expect(rows[0], {"log 2 IW/RTC-didPublishLiveStreams" + kNoRoom + " or iwRoomSetup is nil"});
  expect(rows[1], {"log 2 IW/RTC-didUnpublishLiveStreams" + kNoRoom + " or iwRoomSetup is nil"});
  engine->setIwRoomSetup(std::make_shared<LMRTCIWRoomSetup>());
  check(rows);
}

TEST_F(EventsTest, MuteAndEnableBecomeStates) {
  const Input normal = audio("u1");
  const Input custom = stream("u1", "t", 1);
  const std::string id = "stream: u1_LumoCloudRTC ";
  const std::string customId = "stream: u1_t ";
  const auto lines = [](const std::string& callback, const std::string& keys, const std::string& arguments) {
    return std::vector<std::string>{listener(callback, keys), "host " + callback + " " + arguments};
  };
  const std::string state = "onRemoteStateChanged";
  const std::string customState = "onRemoteCustomStreamStateChanged";
  check({
      {"mute",
       [&] { events->didAudioMute(normal, true); },
       id + "didAudioMute: 1",
       "stream:didAudioMute",
       lines(state, "roomId:r1,userId:u1,type:0,disabled:1", "r1 u1 0 1"),
       {}},
      {"mute custom",
       [&] { events->didAudioMute(custom, false); },
       customId + "didAudioMute: 0",
       "stream:didAudioMute",
       lines(customState, "roomId:r1,userId:u1,tag:t,type:0,disabled:0", "r1 u1 t 0 0"),
       {}},
      {"enable",
       [&] { events->didVideoEnable(normal, true); },
       id + "didVideoEnable: 1",
       "stream:didVideoEnable",
       lines(state, "roomId:r1,userId:u1,type:1,disabled:0", "r1 u1 1 0"),
       {}},
      // The custom line carries no tag; hosts parse it so.
      {"enable custom",
       [&] { events->didVideoEnable(custom, false); },
       customId + "didVideoEnable: 0",
       "stream:didVideoEnable",
       lines(customState, "roomId:r1,userId:u1,type:1,disabled:1", "r1 u1 t 1 1"),
       {}},
      {"room mute",
       [&] { subEvents->didAudioMute(sub, normal, true); },
       "room: s1 " + id + "didAudioMute: 1",
       "room:stream:didAudioMute",
       lines(state, "room:s1,userId:u1,type:0,disabled:1", "s1 u1 0 1"),
       {}},
      {"room mute custom",
       [&] { subEvents->didAudioMute(sub, custom, true); },
       "room: s1 " + customId + "didAudioMute: 1",
       "room:stream:didAudioMute",
       lines(customState, "room:s1,userId:u1,tag:t,type:0,disabled:1", "s1 u1 t 0 1"),
       {}},
      // Sub-rooms log type 0 where the callback gets 1.
      {"room enable",
       [&] { subEvents->didVideoEnable(sub, normal, false); },
       "room: s1 " + id + "didVideoEnable: 0",
       "room:stream:didVideoEnable",
       lines(state, "room:s1,userId:u1,type:0,disabled:1", "s1 u1 1 1"),
       {}},
      {"room enable custom",
       [&] { subEvents->didVideoEnable(sub, custom, true); },
       "room: s1 " + customId + "didVideoEnable: 1",
       "room:stream:didVideoEnable",
       lines(customState, "room:s1,userId:u1,tag:t,type:0,disabled:0", "s1 u1 t 1 0"),
       {}},
  });
}

TEST_F(EventsTest, SubRoomUsersComeWithTheirStreams) {
  const auto u1 = user("u1", {audio("u1")});
  const std::string replay = "console LMRTCIWEngine joinRoom completion remoteUsers ";
  check({
      {"room:didJoinUser",
       [&] { subEvents->didJoinUser(sub, u1); },
       "room: s1 didJoinUser: u1",
       "",
       {listener("onUserJoined", "room:s1,user:u1"), "host onUserJoined s1 u1",
        replay + "Published: s1 userId: u1 mediaType: 0", "host onRemotePublished s1 u1 0",
        replay + "State Changed: s1 userId: u1 mediaType: 0 disabled: 0",
        "host onRemoteStateChanged s1 u1 0 0"},
       {}},
      {"room:didOfflineUser",
       [&] { subEvents->didOfflineUser(sub, u1); },
       "",
       "",
       {listener("onUserOffline", "room:s1,user:u1"), "host onUserOffline s1 u1"},
       {}},
      {"room:didLeaveUser",
       [&] { subEvents->didLeaveUser(sub, u1); },
       "",
       "",
       {listener("onUserLeft", "room:s1,user:u1"), "host onUserLeft s1 u1"},
       {}},
  });
  listen({"onUserJoined"});
  subEvents->didJoinUser(sub, u1);
  EXPECT_TRACE("console LMRTCIWEngine room: s1 didJoinUser: u1",
               replay + "Published: s1 userId: u1 mediaType: 0", "host onRemotePublished s1 u1 0",
               replay + "State Changed: s1 userId: u1 mediaType: 0 disabled: 0",
               "host onRemoteStateChanged s1 u1 0 0");
}

}  // namespace
}  // namespace lumo
