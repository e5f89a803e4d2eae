#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using Calls = std::vector<std::string>;

/// What one event has to leave in the trace.
struct Event {
  std::function<void()> fire;
  std::string first;  ///< the line that comes first; empty: none
  std::string guard;  ///< the method of the error line without room or local user; empty: nothing is checked
  Calls calls = {};   ///< "callback keys| arguments": a listener line, then the call
  bool always;        ///< the listener lines are written also for a listener without the callbacks
};

Event on(std::function<void()> fire, std::string first, std::string guard, Calls calls = {},
         bool always = false) {
  return {std::move(fire), std::move(first), std::move(guard), std::move(calls), always};
}

std::vector<std::string> linesOf(const Event& event, bool heard) {
  std::vector<std::string> lines;
  for (const auto& call : event.calls) {
    const auto bar = call.find('|');
    if (heard || event.always) lines.push_back("L " + call.substr(0, bar));
    if (heard) lines.push_back("host " + call.substr(0, call.find_first_of(" |")) + call.substr(bar + 1));
  }
  return lines;
}

/// The calls for one room: its id for each %@.
Calls in(const std::string& roomId, Calls calls) {
  for (auto& call : calls) call = format(call, {roomId, roomId});
  return calls;
}

class EventsTest : public EngineTest {
 protected:
  EventsTest() {
    join();
    main = room->events();
    // The engine installs itself as this listener only where it joins other rooms.
    sub = std::shared_ptr<LMRTCOtherRoomEventDelegate>(engine, (LMRTCOtherRoomEventDelegate*)engine.get());
  }

  void expect(const Event& event, Lines lines) {
    SCOPED_TRACE(event.first);
    if (!event.first.empty()) lines.insert(lines.begin(), event.first);
    trace->take();
    event.fire();
    EXPECT_EQ(Trace::text(lines), trace->take());
  }
  void expectAll(const std::vector<Event>& rows, bool heard, const std::string& missing) {
    for (const auto& row : rows) {
      const bool refused = !row.guard.empty() && !missing.empty();
      expect(row, refused ? Lines{"E " + row.guard + " msg:" + missing} : linesOf(row, heard));
    }
  }
  /// Fires every event with a full listener, with an empty one, without a room and without a local user.
  void check(const std::vector<Event>& rows, const std::string& missing = "room is nil or localUser is nil") {
    expectAll(rows, true, "");
    const auto deaf = std::make_shared<LMRTCIWEngineDelegate>();
    engine->setEngineDelegate(deaf);
    expectAll(rows, false, "");
    engine->setEngineDelegate(host);
    engine->setRoom(nullptr);
    expectAll(rows, true, missing);
    room->me = nullptr;
    engine->setRoom(room);
    expectAll(rows, true, missing.find("localUser") == std::string::npos ? "" : missing);
  }

  std::shared_ptr<LMRTCRoomEventDelegate> main;
  std::shared_ptr<LMRTCOtherRoomEventDelegate> sub;
  const std::shared_ptr<LMRTCOtherRoom> s1 = make<fake::OtherRoom>("s1");
  const Input camera = video("u1"), custom = stream("u1", "t", 1);
};

TEST_F(EventsTest, UsersComeAndGo) {
  const auto u1 = user("u1");
  check({
      on([&] { main->didJoinUser(u1); }, "C didJoinUser: u1", "didJoinUser",
         {"onUserJoined room:r1,userId:u1| r1 u1"}, true),
      on([&] { main->didLeaveUser(u1); }, "C didLeaveUser: u1", "didLeaveUser",
         {"onUserLeft room:r1,userId:u1| r1 u1"}, true),
      on([&] { main->didOfflineUser(u1); }, "C didOfflineUser: u1", "didLeaveUser",
         {"onUserOffline room:r1,userId:u1| r1 u1"}, true),
      on([&] { sdk->engine->events()->didKicked("r9", 3); }, "C didKicked: r9 reason: 3", "didKicked",
         {"onKicked room:r9| r9 3"}),
      on([&] { sub->didOfflineUser(s1, u1); }, "", "", {"onUserOffline room:s1,user:u1| s1 u1"}),
      on([&] { sub->didLeaveUser(s1, u1); }, "", "", {"onUserLeft room:s1,user:u1| s1 u1"}),
  });
}

TEST_F(EventsTest, AnAbsentIdReadsAsAbsentInTheLogAndAsEmptyByTheHost) {
  const auto nobody = user(std::nullopt);
  expect(on([&] { main->didJoinUser(nobody); }, "C didJoinUser: (null)", ""),
         {"E didJoinUser msg:room is nil or localUser is nil"});
  expect(on([&] { sub->didLeaveUser(s1, nobody); }, "", ""),
         {"L onUserLeft room:s1,user:(null)", "host onUserLeft s1 "});
}

TEST_F(EventsTest, UsersOfSubRoomsComeWithTheirStreams) {
  const std::string replay = "C joinRoom completion remoteUsers ";
  expect(on([&] { sub->didJoinUser(s1, user("u1", {audio("u1")})); }, "C room: s1 didJoinUser: u1", ""),
         {"L onUserJoined room:s1,user:u1", "host onUserJoined s1 u1",
          replay + "Published: s1 userId: u1 mediaType: 0", "host onRemotePublished s1 u1 0",
          replay + "State Changed: s1 userId: u1 mediaType: 0 disabled: 0",
          "host onRemoteStateChanged s1 u1 0 0"});
}

TEST_F(EventsTest, RolesAndMessagesNeedNoLocalUser) {
  const auto u1 = user("u1");
  check({on([&] { main->didSwitchRoleWithUser(u1, 0); }, "C didSwitchRoleWithUser: u1 roleType: 0",
            "didSwitchRoleWithUser", {"onRemoteLiveRoleSwitched roomId:r1,userId:u1,role:1| r1 u1 1"}),
         on([&] { main->didSwitchRoleWithUser(u1, 7); }, "C didSwitchRoleWithUser: u1 roleType: 7",
            "didSwitchRoleWithUser", {"onRemoteLiveRoleSwitched roomId:r1,userId:u1,role:2| r1 u1 2"}),
         on([&] { main->didReceiveMessage("m"); }, "", ""),
         on([&] { sub->didReceiveMessage(s1, "m"); }, "C room: s1 didReceiveMessage: m", ""),
         on([&] { main->didReceiveSEI("x", "u1"); }, "C didReceiveSEI: x userId: u1", "didReceiveSEI",
            {"onSeiReceived roomId:r1,userId:u1,sei:x| r1 u1 x"}),
         on([&] { sub->didReceiveSEI(s1, "x", "u1"); }, "C didReceiveSEI: x userId: u1", "",
            {"onSeiReceived roomId:s1,userId:u1,sei:x| s1 u1 x"}),
         on([&] { main->didReceiveLiveStreamSEI("x"); }, "C didReceiveLiveStreamSEI: x", "",
            {"onLiveMixSeiReceived sei:x| x"})},
        "room is nil ");
}

TEST_F(EventsTest, FirstFrames) {
  std::vector<Event> all;
  const auto add = [&](const Input& stream, std::int64_t type, const Calls& calls = {}) {
    const std::string what = "didReportFirstFrame: " + stream->streamId();
    all.push_back(on([=, this] { main->didReportFirstFrame(stream, type); },
                     format("C %@ , media type: %@", {what, type}), "didReportFirstFrame", in("r1", calls),
                     true));
    all.push_back(on([=, this] { sub->didReportFirstFrame(s1, stream, type); },
                     format("C room: s1 %@ mediaType: %@", {what, type}),
                     "room:didReportFirstFrame:mediaType", in("s1", calls)));
  };
  add(audio("u1"), 0, {"onRemoteFirstFrame room:%@,userId:u1,type:0| %@ u1 0"});
  add(custom, 1, {"onRemoteCustomStreamFirstFrame room:%@,userId:u1,tag:t,type:1| %@ u1 t 1"});
  add(stream("mix", "m", 1, 2), 1, {"onRemoteLiveMixFirstFrame type:1| 1"});
  add(camera, 2);
  add(stream("u1", "t", 1, 3), 1);
  check(all);
}

TEST_F(EventsTest, PublicationsAreGroupedAndFollowedByTheStateOfEachStream) {
  const Inputs streams = {audio("u1"), stream("u1", "t", 1, 1, 0), video("u1", 0)};
  const std::string ids = "Streams: (u1_LumoCloudRTC, u1_t, u1_LumoCloudRTC)";
  const Calls published = {
      "onRemotePublished room:%@,userId:u1,type:2| %@ u1 2",
      "onRemoteCustomStreamPublished room:%@,userId:u1,tag:t,type:1| %@ u1 t 1",
      "onRemoteStateChanged room:%@,userId:u1,type:0,disabled:0| %@ u1 0 0",
      "onRemoteCustomStreamStateChanged room:%@,userId:u1,tag:t,type:1,disabled:1| %@ u1 t 1 1",
      "onRemoteStateChanged room:%@,userId:u1,type:1,disabled:1| %@ u1 1 1"};
  const Calls unpublished = {"onRemoteUnpublished room:%@,userId:u1,type:2| %@ u1 2",
                             "onRemoteCustomStreamUnpublished room:%@,userId:u1,tag:t,type:1| %@ u1 t 1"};
  check({
      on([&] { main->didPublishStreams(streams); }, "C didPublish" + ids, "didPublishStreams",
         in("r1", published)),
      on([&] { sub->didPublishStreams(s1, streams); }, "C room: s1 didPublish" + ids,
         "room:didPublishStreams", in("s1", published)),
      on([&] { main->didUnpublishStreams(streams); }, "C didUnpublish" + ids, "didUnpublishStreams",
         in("r1", unpublished)),
      on([&] { sub->didUnpublishStreams(s1, streams); }, "C room: s1 didUnpublish" + ids,
         "room:didUnpublishStreams", in("s1", unpublished)),
  });
}

TEST_F(EventsTest, LiveMixPublicationsReportTheRoomAndUnpublicationsTheEvent) {
  room->live = {stream("mix", "m", 0, 2), stream("mix", "m", 1, 2)};
  const Inputs streams = {stream("mix", "m", 0, 2), audio("u1")};
  const std::string ids = "LiveStreams: (mix_m, u1_LumoCloudRTC)";
  const std::string mix = "onRemoteLiveMixUnpublished type:0| 0";
  const std::string step = "log 4 IW/RTC-LMRTCIWEngine did";
  check({on([&] { main->didPublishLiveStreams(streams); }, "C didPublish" + ids, "didPublishLiveStreams",
            {"onRemoteLiveMixPublished type:2| 2"}),
         on([&] { main->didUnpublishLiveStreams(streams); }, "C didUnpublish" + ids,
            "didUnpublishLiveStreams", {mix, mix}),
         on([&] { main->didPublishCDNStream(nullptr); }, step + "PublishCDNStream-S", "",
            {"onRemoteLiveMixInnerCdnStreamPublished|"}),
         on([&] { main->didUnpublishCDNStream(nullptr); }, step + "UnpublishCDNStream-S", "",
            {"onRemoteLiveMixInnerCdnStreamUnpublished|"})},
        "room is nil or localUser is nil or iwRoomSetup is nil");
}

TEST_F(EventsTest, MuteAndEnableBecomeStates) {
  const std::string mute = "stream:didAudioMute", enable = "stream:didVideoEnable";
  const std::string state = "onRemoteStateChanged ", customState = "onRemoteCustomStreamStateChanged ";
  const std::string u1 = "stream: u1_LumoCloudRTC ";
  check({
      on([&] { main->didAudioMute(camera, true); }, "C " + u1 + "didAudioMute: 1", mute,
         {state + "roomId:r1,userId:u1,type:0,disabled:1| r1 u1 0 1"}),
      on([&] { main->didAudioMute(custom, false); }, "C stream: u1_t didAudioMute: 0", mute,
         {customState + "roomId:r1,userId:u1,tag:t,type:0,disabled:0| r1 u1 t 0 0"}),
      on([&] { main->didVideoEnable(camera, true); }, "C " + u1 + "didVideoEnable: 1", enable,
         {state + "roomId:r1,userId:u1,type:1,disabled:0| r1 u1 1 0"}),
      // This line carries no tag.
      on([&] { main->didVideoEnable(custom, false); }, "C stream: u1_t didVideoEnable: 0", enable,
         {customState + "roomId:r1,userId:u1,type:1,disabled:1| r1 u1 t 1 1"}),
      on([&] { sub->didAudioMute(s1, camera, false); }, "C room: s1 " + u1 + "didAudioMute: 0",
         "room:" + mute, {state + "room:s1,userId:u1,type:0,disabled:0| s1 u1 0 0"}),
      on([&] { sub->didAudioMute(s1, custom, true); }, "C room: s1 stream: u1_t didAudioMute: 1",
         "room:" + mute, {customState + "room:s1,userId:u1,tag:t,type:0,disabled:1| s1 u1 t 0 1"}),
      // Sub-rooms log type 0 where the callback gets 1.
      on([&] { sub->didVideoEnable(s1, camera, false); }, "C room: s1 " + u1 + "didVideoEnable: 0",
         "room:" + enable, {state + "room:s1,userId:u1,type:0,disabled:1| s1 u1 1 1"}),
      on([&] { sub->didVideoEnable(s1, custom, true); }, "C room: s1 stream: u1_t didVideoEnable: 1",
         "room:" + enable, {customState + "room:s1,userId:u1,tag:t,type:0,disabled:0| s1 u1 t 1 0"}),
  });
}

}  // namespace
}  // namespace lumo
