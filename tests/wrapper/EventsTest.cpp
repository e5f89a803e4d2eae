#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using Calls = std::vector<std::string>;

/// What one event has to leave in the trace.
struct Event {
  std::function<void()> fire;
  std::string console;  ///< after "LMRTCIWEngine "; empty: no line
  std::string guard;    ///< method and text of the error line without a room; empty: nothing is checked
  Calls calls;          ///< "callback keys|arguments": a listener line, then the call
  bool always;          ///< the listener lines are written also for a listener without the callbacks
};

Event on(std::function<void()> fire, std::string console, std::string guard, Calls calls = {},
         bool always = false) {
  return {std::move(fire), std::move(console), std::move(guard), std::move(calls), always};
}

std::vector<std::string> linesOf(const Event& event, bool heard) {
  std::vector<std::string> lines;
  for (const auto& call : event.calls) {
    const auto bar = call.find('|');
    if (heard || event.always) lines.push_back("L " + call.substr(0, bar));
    if (heard) lines.push_back("host " + call.substr(0, call.find(' ')) + " " + call.substr(bar + 1));
  }
  return lines;
}

std::string noUser(const std::string& method) { return method + " msg:room is nil or localUser is nil"; }

class EventsTest : public EngineTest {
 protected:
  EventsTest() {
    join();
    main = room->events();
    // The engine installs itself as this listener only where it joins other rooms.
    sub = std::shared_ptr<LMRTCOtherRoomEventDelegate>(engine, (LMRTCOtherRoomEventDelegate*)engine.get());
  }

  void expect(const Event& event, Lines lines) {
    SCOPED_TRACE(event.console);
    if (!event.console.empty()) lines.insert(lines.begin(), "console LMRTCIWEngine " + event.console);
    trace->take();
    event.fire();
    EXPECT_EQ(Trace::text(lines), trace->take());
  }

  /// Fires every event with a full listener, with an empty one, without a room and without a local user.
  void check(const std::vector<Event>& rows) {
    for (const auto& row : rows) expect(row, linesOf(row, true));
    const auto deaf = std::make_shared<LMRTCIWEngineDelegate>();
    engine->setEngineDelegate(deaf);
    for (const auto& row : rows) expect(row, linesOf(row, false));
    engine->setEngineDelegate(host);
    engine->setRoom(nullptr);
    for (const auto& row : rows) {
      expect(row, row.guard.empty() ? linesOf(row, true) : Lines{"E " + row.guard});
    }
    room->me = nullptr;
    engine->setRoom(room);
    for (const auto& row : rows) {
      const bool checked = row.guard.find("localUser") != std::string::npos;
      expect(row, checked ? Lines{"E " + row.guard} : linesOf(row, true));
    }
  }

  std::shared_ptr<LMRTCRoomEventDelegate> main;
  std::shared_ptr<LMRTCOtherRoomEventDelegate> sub;
  const std::shared_ptr<LMRTCOtherRoom> s1 = make<fake::OtherRoom>("s1");
  const Input camera = video("u1"), custom = stream("u1", "t", 1);
};

TEST_F(EventsTest, UsersOfTheMainRoom) {
  const auto u1 = user("u1");
  const std::string noRoom = "didSwitchRoleWithUser msg:room is nil ";
  check({
      on([&] { main->didJoinUser(u1); }, "didJoinUser: u1", noUser("didJoinUser"),
         {"onUserJoined room:r1,userId:u1|r1 u1"}, true),
      on([&] { main->didLeaveUser(u1); }, "didLeaveUser: u1", noUser("didLeaveUser"),
         {"onUserLeft room:r1,userId:u1|r1 u1"}, true),
      on([&] { main->didOfflineUser(u1); }, "didOfflineUser: u1", noUser("didLeaveUser"),
         {"onUserOffline room:r1,userId:u1|r1 u1"}, true),
      on([&] { main->didSwitchRoleWithUser(u1, 0); }, "didSwitchRoleWithUser: u1 roleType: 0", noRoom,
         {"onRemoteLiveRoleSwitched roomId:r1,userId:u1,role:1|r1 u1 1"}),
      on([&] { main->didSwitchRoleWithUser(u1, 7); }, "didSwitchRoleWithUser: u1 roleType: 7", noRoom,
         {"onRemoteLiveRoleSwitched roomId:r1,userId:u1,role:2|r1 u1 2"}),
      on([&] { sdk->engine->events()->didKicked("r9", 3); }, "didKicked: r9 reason: 3", noUser("didKicked"),
         {"onKicked room:r9|r9 3"}),
      on([&] { sub->didOfflineUser(s1, u1); }, "", "", {"onUserOffline room:s1,user:u1|s1 u1"}),
      on([&] { sub->didLeaveUser(s1, u1); }, "", "", {"onUserLeft room:s1,user:u1|s1 u1"}),
  });
  expect(on([&] { main->didJoinUser(user(std::nullopt)); }, "didJoinUser: (null)", ""),
         {"E " + noUser("didJoinUser")});
}

TEST_F(EventsTest, UsersOfSubRoomsComeWithTheirStreams) {
  const auto u1 = user("u1", {audio("u1")});
  const std::string replay = "console LMRTCIWEngine joinRoom completion remoteUsers ";
  const Event joined = on([&] { sub->didJoinUser(s1, u1); }, "room: s1 didJoinUser: u1", "");
  Lines lines = {"L onUserJoined room:s1,user:u1\nhost onUserJoined s1 u1",
                 replay + "Published: s1 userId: u1 mediaType: 0", "host onRemotePublished s1 u1 0",
                 replay + "State Changed: s1 userId: u1 mediaType: 0 disabled: 0",
                 "host onRemoteStateChanged s1 u1 0 0"};
  expect(joined, lines);
  listen({"onUserJoined"});
  lines.erase(lines.begin());
  expect(joined, lines);
}

TEST_F(EventsTest, Messages) {
  check({
      on([&] { main->didReceiveMessage("m"); }, "", ""),
      on([&] { sub->didReceiveMessage(s1, "m"); }, "room: s1 didReceiveMessage: m", ""),
      on([&] { main->didReceiveSEI("x", "u1"); }, "didReceiveSEI: x userId: u1",
         "didReceiveSEI msg:room is nil ", {"onSeiReceived roomId:r1,userId:u1,sei:x|r1 u1 x"}),
      on([&] { sub->didReceiveSEI(s1, "x", "u1"); }, "didReceiveSEI: x userId: u1", "",
         {"onSeiReceived roomId:s1,userId:u1,sei:x|s1 u1 x"}),
      on([&] { main->didReceiveLiveStreamSEI("x"); }, "didReceiveLiveStreamSEI: x", "",
         {"onLiveMixSeiReceived sei:x|x"}),
  });
}

TEST_F(EventsTest, FirstFrames) {
  struct Row {
    Input stream;
    std::int64_t mediaType;
    std::string call;  ///< with the keys and arguments, and % for the room; empty: dropped
  };
  const std::vector<Row> rows = {
      {audio("u1"), 0, "onRemoteFirstFrame room:%,userId:u1,type:0|% u1 0"},
      {camera, 1, "onRemoteFirstFrame room:%,userId:u1,type:1|% u1 1"},
      {custom, 1, "onRemoteCustomStreamFirstFrame room:%,userId:u1,tag:t,type:1|% u1 t 1"},
      {stream("mix", "m", 1, 2), 1, "onRemoteLiveMixFirstFrame type:1|1"},
      {camera, 2, ""},
      {camera, -1, ""},
      {stream("u1", "t", 1, 3), 1, ""},
  };
  std::vector<Event> all;
  for (const Row& row : rows) {
    const auto calls = [&row](const std::string& roomId) {
      std::string call;
      for (const char c : row.call) call += c == '%' ? roomId : std::string(1, c);
      return call.empty() ? Lines{} : Lines{call};
    };
    const std::string what = "didReportFirstFrame: " + row.stream->streamId();
    const std::string type = std::to_string(row.mediaType);
    all.push_back(on([&] { main->didReportFirstFrame(row.stream, row.mediaType); },
                     what + " , media type: " + type, noUser("didReportFirstFrame"), calls("r1"), true));
    all.push_back(on([&] { sub->didReportFirstFrame(s1, row.stream, row.mediaType); },
                     "room: s1 " + what + " mediaType: " + type, noUser("room:didReportFirstFrame:mediaType"),
                     calls("s1")));
  }
  check(all);
}

TEST_F(EventsTest, PublicationsAreGroupedAndFollowedByTheStateOfEachStream) {
  const Inputs streams = {audio("u1"), stream("u1", "t", 1, 1, 0), video("u1", 0)};
  const std::string ids = "Streams: (u1_LumoCloudRTC, u1_t, u1_LumoCloudRTC)";
  const auto groups = [](const std::string& id, const std::string& what) {
    const std::string who = " room:" + id + ",userId:u1,";
    return Lines{"onRemote" + what + who + "type:2|" + id + " u1 2",
                 "onRemoteCustomStream" + what + who + "tag:t,type:1|" + id + " u1 t 1"};
  };
  const auto published = [&](const std::string& id) {
    const std::string who = "StateChanged room:" + id + ",userId:u1,";
    auto calls = groups(id, "Published");
    calls.push_back("onRemote" + who + "type:0,disabled:0|" + id + " u1 0 0");
    calls.push_back("onRemoteCustomStream" + who + "tag:t,type:1,disabled:1|" + id + " u1 t 1 1");
    calls.push_back("onRemote" + who + "type:1,disabled:1|" + id + " u1 1 1");
    return calls;
  };
  check({
      on([&] { main->didPublishStreams(streams); }, "didPublish" + ids, noUser("didPublishStreams"),
         published("r1")),
      on([&] { sub->didPublishStreams(s1, streams); }, "room: s1 didPublish" + ids,
         noUser("room:didPublishStreams"), published("s1")),
      on([&] { main->didUnpublishStreams(streams); }, "didUnpublish" + ids, noUser("didUnpublishStreams"),
         groups("r1", "Unpublished")),
      on([&] { sub->didUnpublishStreams(s1, streams); }, "room: s1 didUnpublish" + ids,
         noUser("room:didUnpublishStreams"), groups("s1", "Unpublished")),
      on([&] { main->didPublishStreams({}); }, "didPublishStreams: ()", noUser("didPublishStreams")),
  });
}

TEST_F(EventsTest, AnUnsetCallbackSkipsOnlyItsOwnStep) {
  listen({"onRemotePublished", "onRemoteCustomStreamStateChanged"});
  main->didPublishStreams({stream("u1", "t", 0), audio("u2")});
  EXPECT_TRACE("console LMRTCIWEngine didPublishStreams: (u1_t, u2_LumoCloudRTC)",
               "L onRemoteCustomStreamPublished room:r1,userId:u1,tag:t,type:0",
               "host onRemoteCustomStreamPublished r1 u1 t 0",
               "L onRemoteStateChanged room:r1,userId:u2,type:0,disabled:0",
               "host onRemoteStateChanged r1 u2 0 0");
}

TEST_F(EventsTest, LiveMixPublicationsReportTheRoomAndUnpublicationsTheEvent) {
  room->live = {stream("mix", "m", 0, 2), stream("mix", "m", 1, 2)};
  const Inputs streams = {stream("mix", "m", 0, 2), audio("u1")};
  const std::string ids = "LiveStreams: (mix_m, u1_LumoCloudRTC)";
  const std::string noSetup = "LiveStreams msg:room is nil or localUser is nil or iwRoomSetup is nil";
  const std::string mix = "onRemoteLiveMixUnpublished type:0|0";
  const std::vector<Event> rows = {
      on([&] { main->didPublishLiveStreams(streams); }, "didPublish" + ids, "didPublish" + noSetup,
         {"onRemoteLiveMixPublished type:2|2"}),
      on([&] { main->didUnpublishLiveStreams(streams); }, "didUnpublish" + ids, "didUnpublish" + noSetup,
         {mix, mix}),
  };
  const auto present = engine->iwRoomSetup();
  engine->setIwRoomSetup(nullptr);
  for (const auto& row : rows) expect(row, {"E " + row.guard});
  engine->setIwRoomSetup(present);
  check(rows);
}

TEST_F(EventsTest, TheInnerCdnStreamWritesAStepForEveryListener) {
  const std::string published = "onRemoteLiveMixInnerCdnStreamPublished";
  const std::string unpublished = "onRemoteLiveMixInnerCdnStreamUnpublished";
  const std::string step = "log 4 IW/RTC-LMRTCIWEngine did";
  main->didPublishCDNStream(nullptr);
  main->didUnpublishCDNStream(nullptr);
  EXPECT_TRACE(step + "PublishCDNStream-S", "L " + published, "host " + published,
               step + "UnpublishCDNStream-S", "L " + unpublished, "host " + unpublished);
  listen({published, unpublished});
  main->didPublishCDNStream(nullptr);
  main->didUnpublishCDNStream(nullptr);
  EXPECT_TRACE(step + "PublishCDNStream-S", step + "UnpublishCDNStream-S");
}

TEST_F(EventsTest, MuteAndEnableBecomeStates) {
  const std::string mute = "stream:didAudioMute msg:room is nil or localUser is nil";
  const std::string enable = "stream:didVideoEnable msg:room is nil or localUser is nil";
  const std::string state = "onRemoteStateChanged ";
  const std::string customState = "onRemoteCustomStreamStateChanged ";
  const std::string u1 = "stream: u1_LumoCloudRTC ";
  check({
      on([&] { main->didAudioMute(camera, true); }, u1 + "didAudioMute: 1", mute,
         {state + "roomId:r1,userId:u1,type:0,disabled:1|r1 u1 0 1"}),
      on([&] { main->didAudioMute(custom, false); }, "stream: u1_t didAudioMute: 0", mute,
         {customState + "roomId:r1,userId:u1,tag:t,type:0,disabled:0|r1 u1 t 0 0"}),
      on([&] { main->didVideoEnable(camera, true); }, u1 + "didVideoEnable: 1", enable,
         {state + "roomId:r1,userId:u1,type:1,disabled:0|r1 u1 1 0"}),
      // This line carries no tag.
      on([&] { main->didVideoEnable(custom, false); }, "stream: u1_t didVideoEnable: 0", enable,
         {customState + "roomId:r1,userId:u1,type:1,disabled:1|r1 u1 t 1 1"}),
      on([&] { sub->didAudioMute(s1, camera, false); }, "room: s1 " + u1 + "didAudioMute: 0", "room:" + mute,
         {state + "room:s1,userId:u1,type:0,disabled:0|s1 u1 0 0"}),
      on([&] { sub->didAudioMute(s1, custom, true); }, "room: s1 stream: u1_t didAudioMute: 1",
         "room:" + mute, {customState + "room:s1,userId:u1,tag:t,type:0,disabled:1|s1 u1 t 0 1"}),
      // Sub-rooms log type 0 where the callback gets 1.
      on([&] { sub->didVideoEnable(s1, camera, false); }, "room: s1 " + u1 + "didVideoEnable: 0",
         "room:" + enable, {state + "room:s1,userId:u1,type:0,disabled:1|s1 u1 1 1"}),
      on([&] { sub->didVideoEnable(s1, custom, true); }, "room: s1 stream: u1_t didVideoEnable: 1",
         "room:" + enable, {customState + "room:s1,userId:u1,tag:t,type:0,disabled:0|s1 u1 t 1 0"}),
  });
}

}  // namespace
}  // namespace lumo
