#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using RoomTest = EngineTest;

std::string completed(const std::string& rest) { return "C joinRoom completion " + rest; }

/// The lines of every completed join that brought a room.
const std::string kJoined = completed("code: 0\n-> r1.setDelegate engine\nhost onRoomJoined 0 ok");

TEST_F(RoomTest, JoinBuildsTheRoomConfigFromTheSetup) {
  // Live, room, role and join type of the SDK.
  const std::vector<std::pair<LMRTCIWRoomSetup, std::string>> rows = {
      {{.mediaType = 0, .role = 0, .joinType = 0}, "1 0 nil 0"},
      {{.mediaType = 1, .role = 0, .joinType = 1}, "nil 0 nil 1"},
      {{.mediaType = 2, .role = 1, .joinType = 2}, "0 2 0 0"},
      {{.mediaType = 3, .role = 2, .joinType = ~0ULL}, "nil 2 1 0"},
      {{.mediaType = -1, .role = 3, .joinType = 1}, "nil nil nil 1"},
  };
  for (const auto& [values, config] : rows) {
    expect(
        0, engine->joinRoom("r1", std::make_shared<LMRTCIWRoomSetup>(values)),
        {"T joinRoom roomId:r1", "C joinroom config: " + values.description(), "-> joinRoom r1 " + config});
  }
  expect(kBadParameter, engine->joinRoom("r1", nullptr), {"T joinRoom roomId:r1", "E: setup is nil"});
}

TEST_F(RoomTest, AFailedJoinIsReportedAndReplaysNothing) {
  room->users = {user("u1", {audio("u1")})};
  engine->joinRoom("r1", roomSetup(0));
  complete(-401, {completed("code: -401"), "host onRoomJoined -401 sdk-401"});
  sdk->engine->nextRoom.set(nullptr);
  engine->joinRoom("r1", roomSetup(0));
  complete(0, {completed("code: 0"), "host onRoomJoined 0 ok"});
  EXPECT_EQ(nullptr, engine->room());
}

TEST_F(RoomTest, JoinReplaysWhatTheRoomHolds) {
  room->others = {"x", "y"};
  room->users = {user("u1", {audio("u1"), video("u1", 0)}),
                 user("u2", {stream("u2", "screen", 1, 1, 0), audio("u2"), stream("u2", "screen", 0)}),
                 user("u3")};
  const std::string custom = "remoteUsers Custom Stream State Changed: r1 userId: u2 tag: screen disabled: ";
  replay();
  EXPECT_TRACE(
      kJoined, "host onSubRoomBanded x", "host onSubRoomBanded y",
      completed("remoteUser Joined: r1 userId: u1"), "host onUserJoined r1 u1",
      completed("remoteUsers Published: r1 userId: u1 mediaType: 2"), "host onRemotePublished r1 u1 2",
      completed("remoteUsers State Changed: r1 userId: u1 mediaType: 0 disabled: 0"),
      "host onRemoteStateChanged r1 u1 0 0",
      completed("remoteUsers State Changed: r1 userId: u1 mediaType: 1 disabled: 1"),
      "host onRemoteStateChanged r1 u1 1 1", completed("remoteUser Joined: r1 userId: u2"),
      "host onUserJoined r1 u2", "host onRemoteCustomStreamPublished r1 u2 screen 2",
      completed("remoteUsers Published: r1 userId: u2 mediaType: 0"), "host onRemotePublished r1 u2 0",
      completed(custom + "1"), "host onRemoteCustomStreamStateChanged r1 u2 screen 1 1",
      completed("remoteUsers State Changed: r1 userId: u2 mediaType: 0 disabled: 0"),
      "host onRemoteStateChanged r1 u2 0 0", completed(custom + "0"),
      "host onRemoteCustomStreamStateChanged r1 u2 screen 0 0", completed("remoteUser Joined: r1 userId: u3"),
      "host onUserJoined r1 u3");
  EXPECT_EQ(room, engine->room());
}

TEST_F(RoomTest, JoinReplaySkipsOddStreamsAndUnsetCallbacks) {
  room->users = {user("u1", {stream("u1", "t", 3, 0), stream("u1", "t", 1, 2), stream("u1", "t", 3, 1),
                             stream("u1", "t", 2, 1)})};
  const std::string u1 = completed("remoteUser Joined: r1 userId: u1\nhost onUserJoined r1 u1");
  // Live-mix streams are not told apart from custom ones when they are grouped; other media types make no
  // report.
  replay();
  EXPECT_TRACE(kJoined, u1, "host onRemoteCustomStreamPublished r1 u1 t 1",
               completed("remoteUsers State Changed: r1 userId: u1 mediaType: 3 disabled: 0"));

  room->others = {"x"};
  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1)})};
  listen({"onUserJoined", "onSubRoomBanded"});
  replay();
  EXPECT_TRACE(kJoined);
  listen({"onRoomJoined", "onSubRoomBanded", "onRemotePublished", "onRemoteStateChanged",
          "onRemoteCustomStreamPublished", "onRemoteCustomStreamStateChanged"});
  replay();
  EXPECT_TRACE(completed("code: 0"), "-> r1.setDelegate engine", u1);
}

TEST_F(RoomTest, AnAudienceMemberHearsOfTheLiveMix) {
  const auto hears = [this](const std::string& callback, const std::string& arguments) {
    replay(LMRTCIWRoleLiveAudience);
    EXPECT_TRACE(kJoined,
                 "R joinRoom callback:" + callback + ", code:0, role:2,setup:" + roomSetup(2)->description(),
                 "host " + callback + arguments);
  };
  room->live = {stream("mix", "", 0, 2), stream("mix", "", 1, 2)};
  hears("onRemoteLiveMixPublished", " 2");
  room->live.clear();
  room->cdn = make<fake::CdnInput>("cdn");
  hears("onRemoteLiveMixInnerCdnStreamPublished", "");

  room->live = {stream("mix", "", 0, 2)};
  replay(LMRTCIWRoleLiveBroadcaster);
  EXPECT_TRACE(kJoined);
}

TEST_F(RoomTest, LeavingResetsTheInnerCdnSettingsWhateverTheCode) {
  join();
  engine->setInnerCDNVideoResolution(4);
  engine->setInnerCDNVideoFps(2);
  expect(0, engine->leaveRoom(), {"T leaveRoom msg:LMRTCIWEngine leaveRoom", "-> leaveRoom"});
  complete(-7, {"C leaveRoom code: -7", "host onRoomLeft -7 sdk-7"});
  EXPECT_EQ(-1, engine->innerCDNVideoResolution());
  EXPECT_EQ(-1, engine->innerCDNVideoFps());
}

TEST_F(RoomTest, RemoteUsersAreFoundInTheMainRoomBeforeTheSubRooms) {
  const auto inMain = user("u1"), shadowed = user("u1");
  const auto sub = make<fake::OtherRoom>("s1");
  sub->users = {shadowed};
  room->users = {inMain};
  join();
  engine->setSubs({{"s1", sub}});
  expect(inMain, engine->getRemoteUser("u1"), {"T getRemoteUser userId:u1"});
  engine->setRoom(nullptr);
  EXPECT_EQ(shadowed, engine->getRemoteUser("u1"));
}

TEST_F(RoomTest, TheSessionIdNeedsRoomLocalUserAndSetup) {
  expect("", engine->getSessionId(), {"T getSessionId", kNoSetup});
  join();
  expect("session of r1", engine->getSessionId(), {"T getSessionId"});
  engine->setIwRoomSetup(nullptr);
  expect("", engine->getSessionId(), {"T getSessionId", kNoSetup});
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
