#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using RoomTest = EngineTest;

constexpr char kCompletion[] = "console LMRTCIWEngine joinRoom completion ";

std::string completed(const std::string& rest) { return kCompletion + rest; }

TEST_F(RoomTest, JoinBuildsTheRoomConfigFromTheSetup) {
  struct Row {
    std::int64_t mediaType;
    std::int64_t role;
    std::uint64_t joinType;
    std::string config;
  };
  const std::vector<Row> rows = {
      {0, 0, 0, "live:1 room:0 role:unset join:0"},
      {1, 0, 1, "live:unset room:0 role:unset join:1"},
      {2, 1, 2, "live:0 room:2 role:0 join:0"},
      {3, 2, ~0ULL, "live:unset room:2 role:1 join:0"},
      {-1, 3, 1, "live:unset room:unset role:unset join:1"},
  };
  for (const Row& row : rows) {
    const auto roomSetup = std::make_shared<LMRTCIWRoomSetup>();
    roomSetup->mediaType = row.mediaType;
    roomSetup->role = row.role;
    roomSetup->joinType = row.joinType;
    expect(0, engine->joinRoom("r1", roomSetup),
           {"T joinRoom roomId:r1", "console LMRTCIWEngine joinroom config: " + roomSetup->description(),
            "sdk joinRoom r1 " + row.config});
    EXPECT_EQ(roomSetup, engine->iwRoomSetup());
  }
}

TEST_F(RoomTest, JoinWithoutASetupIsRefusedAndChangesNothing) {
  join();
  const auto before = engine->iwRoomSetup();
  expect(LMRTCWrapperCodeParameterError, engine->joinRoom("r2", nullptr),
         {"T joinRoom roomId:r2", "E joinRoom msg:setup is nil"});
  EXPECT_EQ(before, engine->iwRoomSetup());
}

TEST_F(RoomTest, AFailedJoinIsReportedAndReplaysNothing) {
  room->users = {user("u1", {audio("u1")})};
  room->others = {"x"};
  const auto roomSetup = std::make_shared<LMRTCIWRoomSetup>();
  engine->joinRoom("r1", roomSetup);
  trace->take();
  expect(true, sdk->complete(-401), {completed("code: -401"), "host onRoomJoined -401 sdk-401"});

  sdk->engine->nextRoom.set(nullptr);
  engine->joinRoom("r1", roomSetup);
  trace->take();
  expect(true, sdk->complete(0), {completed("code: 0"), "host onRoomJoined 0 ok"});
  EXPECT_EQ(nullptr, engine->room());
  EXPECT_EQ(roomSetup, engine->iwRoomSetup());
}

TEST_F(RoomTest, JoinReplaysWhatTheRoomHolds) {
  room->others = {"x", "y"};
  room->users = {user("u1", {audio("u1"), video("u1", 0)}),
                 user("u2", {stream("u2", "screen", 1, 1, 0), audio("u2"), stream("u2", "screen", 0)}),
                 user("u3")};
  engine->joinRoom("r1", std::make_shared<LMRTCIWRoomSetup>());
  trace->take();
  expect(true, sdk->complete(),
         {completed("code: 0"),
          "sdk r1.setDelegate engine",
          "host onRoomJoined 0 ok",
          "host onSubRoomBanded x",
          "host onSubRoomBanded y",
          completed("remoteUser Joined: r1 userId: u1"),
          "host onUserJoined r1 u1",
          completed("remoteUsers Published: r1 userId: u1 mediaType: 2"),
          "host onRemotePublished r1 u1 2",
          completed("remoteUsers State Changed: r1 userId: u1 mediaType: 0 disabled: 0"),
          "host onRemoteStateChanged r1 u1 0 0",
          completed("remoteUsers State Changed: r1 userId: u1 mediaType: 1 disabled: 1"),
          "host onRemoteStateChanged r1 u1 1 1",
          completed("remoteUser Joined: r1 userId: u2"),
          "host onUserJoined r1 u2",
          "host onRemoteCustomStreamPublished r1 u2 screen 2",
          completed("remoteUsers Published: r1 userId: u2 mediaType: 0"),
          "host onRemotePublished r1 u2 0",
          completed("remoteUsers Custom Stream State Changed: r1 userId: u2 tag: screen disabled: 1"),
          "host onRemoteCustomStreamStateChanged r1 u2 screen 1 1",
          completed("remoteUsers State Changed: r1 userId: u2 mediaType: 0 disabled: 0"),
          "host onRemoteStateChanged r1 u2 0 0",
          completed("remoteUsers Custom Stream State Changed: r1 userId: u2 tag: screen disabled: 0"),
          "host onRemoteCustomStreamStateChanged r1 u2 screen 0 0",
          completed("remoteUser Joined: r1 userId: u3"),
          "host onUserJoined r1 u3"});
  EXPECT_EQ(room, engine->room());
}

TEST_F(RoomTest, JoinReplaySkipsOddStreamsAndUnsetCallbacks) {
  room->users = {user("u1", {stream("u1", "t", 3, 0), stream("u1", "t", 1, 2), stream("u1", "t", 3, 1),
                             stream("u1", "t", 2, 1)})};
  const auto replay = [this](const std::set<std::string>& without) {
    listen(without);
    engine->joinRoom("r1", std::make_shared<LMRTCIWRoomSetup>());
    trace->take();
    sdk->complete();
  };
  // Live-mix streams are not told apart from custom ones when they are grouped; other media types make no
  // report.
  replay({});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok",
               completed("remoteUser Joined: r1 userId: u1"), "host onUserJoined r1 u1",
               "host onRemoteCustomStreamPublished r1 u1 t 1",
               completed("remoteUsers State Changed: r1 userId: u1 mediaType: 3 disabled: 0"));

  room->others = {"x"};
  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1)})};
  replay({"onUserJoined", "onSubRoomBanded"});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok");
  replay({"onRoomJoined", "onSubRoomBanded", "onRemotePublished", "onRemoteStateChanged",
          "onRemoteCustomStreamPublished", "onRemoteCustomStreamStateChanged"});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine",
               completed("remoteUser Joined: r1 userId: u1"), "host onUserJoined r1 u1");
}

TEST_F(RoomTest, AnAudienceMemberHearsOfTheLiveMix) {
  room->live = {stream("mix", "", 0, 2), stream("mix", "", 1, 2)};
  const auto roomSetup = std::make_shared<LMRTCIWRoomSetup>();
  roomSetup->role = LMRTCIWRoleLiveAudience;
  const auto result = [&](const std::string& callback) {
    return "R joinRoom callback:" + callback + ", code:0, role:2,setup:" + roomSetup->description();
  };
  const auto replay = [&](const std::set<std::string>& without) {
    listen(without);
    engine->joinRoom("r1", roomSetup);
    trace->take();
    sdk->complete();
  };
  replay({});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok",
               result("onRemoteLiveMixPublished"), "host onRemoteLiveMixPublished 2");

  room->live.clear();
  room->cdn = make<fake::CdnInput>("cdn", kLMRTCDefaultStreamTag, 0, 2);
  replay({});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok",
               result("onRemoteLiveMixInnerCdnStreamPublished"),
               "host onRemoteLiveMixInnerCdnStreamPublished");

  room->live = {stream("mix", "", 0, 2)};
  replay({"onRemoteLiveMixPublished", "onRemoteLiveMixInnerCdnStreamPublished"});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok");
  roomSetup->role = LMRTCIWRoleLiveBroadcaster;
  replay({});
  EXPECT_TRACE(completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok");
}

TEST_F(RoomTest, TheReplayFollowsTheRoleThatTheJoinWasCalledWith) {
  room->live = {stream("mix", "", 0, 2)};
  const auto audience = std::make_shared<LMRTCIWRoomSetup>();
  audience->role = LMRTCIWRoleLiveAudience;
  engine->joinRoom("r1", audience);
  engine->joinRoom("r1", std::make_shared<LMRTCIWRoomSetup>());
  trace->take();
  sdk->complete();
  EXPECT_NE(std::string::npos, trace->take().find("host onRemoteLiveMixPublished 0"));
  expect(true, sdk->complete(),
         {completed("code: 0"), "sdk r1.setDelegate engine", "host onRoomJoined 0 ok"});
}

TEST_F(RoomTest, LeavingResetsTheInnerCdnSettingsWhateverTheCode) {
  for (const std::int64_t code : {0, -7}) {
    join();
    engine->setInnerCDNVideoResolution(4);
    engine->setInnerCDNVideoFps(2);
    expect(0, engine->leaveRoom(), {"T leaveRoom msg:LMRTCIWEngine leaveRoom", "sdk leaveRoom"});
    expect(true, sdk->complete(code),
           {"console LMRTCIWEngine leaveRoom code: " + std::to_string(code),
            "host onRoomLeft " + std::to_string(code) + (code == 0 ? " ok" : " sdk-7")});
    EXPECT_EQ(-1, engine->innerCDNVideoResolution());
    EXPECT_EQ(-1, engine->innerCDNVideoFps());
    EXPECT_EQ(room, engine->room());
  }
}

TEST_F(RoomTest, RemoteUsersAreFoundInTheMainRoomBeforeTheSubRooms) {
  const auto inMain = user("u1");
  const auto shadowed = user("u1");
  const auto inSub = user("u2");
  const auto sub = make<fake::OtherRoom>("s1");
  sub->users = {shadowed, inSub};
  room->users = {inMain};
  join();
  engine->setSubs({{"s1", sub}});
  EXPECT_EQ(inMain, engine->getRemoteUser("u1"));
  EXPECT_EQ(inSub, engine->getRemoteUser("u2"));
  expect(nullptr, engine->getRemoteUser("u3"),
         {"T getRemoteUser userId:u1", "T getRemoteUser userId:u2", "T getRemoteUser userId:u3"});
  engine->setRoom(nullptr);
  EXPECT_EQ(shadowed, engine->getRemoteUser("u1"));
}

TEST_F(RoomTest, TheSessionIdNeedsRoomLocalUserAndSetup) {
  const auto expectAbsent = [this] {
    expect("", engine->getSessionId(),
           {"T getSessionId", "E getSessionId msg:room is nil or localUser is nil or iwRoomSetup is nil"});
  };
  expectAbsent();
  join();
  expect("session of r1", engine->getSessionId(), {"T getSessionId"});
  engine->setIwRoomSetup(nullptr);
  expectAbsent();
  join();
  room->me = nullptr;
  expectAbsent();
}

TEST_F(RoomTest, GroupingMakesOneReportPerUserAndPerUserAndTag) {
  struct Row {
    Inputs streams;
    std::set<std::string> reports;
  };
  const std::vector<Row> rows = {
      {{}, {}},
      {{audio("u"), video("u")}, {"1 u LumoCloudRTC 2"}},
      {{video("u"), video("u")}, {"1 u LumoCloudRTC 1"}},
      {{audio("u"), stream("u", "t", 1)}, {"1 u LumoCloudRTC 0", "0 u t 1"}},
      {{stream("u", "t", 1), stream("u", "s", 0), stream("u", "t", 0)}, {"0 u t 2", "0 u s 0"}},
      {{stream("u", "t", 2), stream("u", "t", 7, 0)}, {}},
      {{audio("u"), stream("u", "last", 3, 0)}, {"1 u last 0"}},
      {{stream("u", "t", 3), stream("u", "t", 1)}, {"0 u t 1"}},
      {{stream("mix", "", 0, 2), stream("mix", "", 1, 2), stream("odd", "", 0, 9)}, {"0 mix  2", "0 odd  0"}},
      // A user whose name looks like another user's custom stream shares that stream's key.
      {{audio("u@t"), stream("u", "t", 1)}, {"0 u t 2"}},
  };
  for (const Row& row : rows) {
    std::multiset<std::string> reports;
    parseInPutStream(row.streams, [&](bool normal, const std::string& userId, const std::string& tag,
                                      std::int64_t mediaType) {
      reports.insert(format("%@ %@ %@ %@", {normal, userId, tag, mediaType}));
    });
    EXPECT_EQ(std::multiset<std::string>(row.reports.begin(), row.reports.end()), reports);
  }
}

}  // namespace
}  // namespace lumo
