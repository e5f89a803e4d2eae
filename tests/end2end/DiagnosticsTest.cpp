#include <algorithm>
#include <cmath>

#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

/// Writes down statistics, results of the probe and texts that come with pictures.
class DiagnosticsTest : public CallTest {
 protected:
  DiagnosticsTest() {
    const auto sound = [this](const auto& figures, const auto&... who) {
      line("sound", who..., figures.volume, figures.bitrate, percent(figures.packageLostRate), figures.rtt);
    };
    const auto picture = [this](const auto& figures, const auto&... who) {
      line("picture", who..., figures.width, figures.height, figures.fps, figures.bitrate,
           percent(figures.packageLostRate), figures.rtt);
    };
    stats->onNetworkStats = [this](const auto& figures) {
      line("network", figures.type, figures.sendBitrate, figures.receiveBitrate, figures.rtt);
    };
    stats->onLocalAudioStats = sound;
    stats->onLocalVideoStats = picture;
    stats->onLiveMixAudioStats = sound;
    stats->onLiveMixVideoStats = picture;
    stats->onRemoteAudioStats = sound;
    stats->onRemoteVideoStats = picture;
    stats->onRemoteCustomVideoStats = picture;
    stats->onLiveMixMemberAudioStats = recorded("loud");
    const auto measured = [this](const char* direction) {
      return [this, direction](const LMRTCIWNetworkProbeStats& figures) {
        line(direction, figures.qualityLevel, figures.rtt, percent(figures.packetLostRate));
      };
    };
    probe->onNetworkProbeUpLinkStats = measured("up");
    probe->onNetworkProbeDownLinkStats = measured("down");
    probe->onNetworkProbeFinished = recorded("finished");
    delegate->onNetworkProbeStarted = recorded("started");
    delegate->onNetworkProbeStopped = recorded("stopped");
    delegate->onSeiReceived = recorded("sei");
  }

  static std::int64_t percent(double share) { return std::lround(share * 100); }
  /// What is told in the third second from now, sorted.
  Lines settled() {
    advance(2s);
    lines.clear();
    advance(1s);
    std::ranges::sort(lines);
    return told();
  }

  const std::shared_ptr<LMRTCIWStatsDelegate> stats = std::make_shared<LMRTCIWStatsDelegate>();
  const std::shared_ptr<LMRTCIWNetworkProbeDelegate> probe = std::make_shared<LMRTCIWNetworkProbeDelegate>();
};

TEST_F(DiagnosticsTest, StatisticsTellWhatIsSentAndWhatThePoorNetworkLoses) {
  engine->setStatsDelegate(stats);
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  EXPECT_EQ(0, anna->publish("clip", Media::video));
  EXPECT_EQ(Lines{}, settled()) << "not in a room";
  join();
  publish(kBoth);
  Receiver normal, small;
  anna->onVideo(normal.sink());
  add("bob")->onVideo(small.sink(), true);
  EXPECT_EQ(0, engine->subscribe("anna", kBoth));
  EXPECT_EQ(0, engine->subscribeCustomStream("anna", "clip", kVideo, false));
  EXPECT_EQ((Lines{"network 1 60480 112128 0", "picture 180 240 10 5184 0 0", "picture 480 640 15 55296 0 0",
                   "picture r anna 480 640 15 55296 0 0", "picture r anna clip 480 640 15 55296 0 0",
                   "sound 72 0 0 0", "sound r anna 72 1536 0 0"}),
            settled());

  double lostUp = 0, lostDown = 0;
  stats->onLocalVideoStats = [&](const auto& figures) {
    lostUp += figures.tiny ? 0 : figures.packageLostRate;
  };
  stats->onRemoteVideoStats = [&](const auto& figures, auto&&...) { lostDown += figures.packageLostRate; };
  local->setNetwork({.delay = 80ms, .loss = 0.25}, {.delay = 40ms, .loss = 0.1});
  advance(20s);
  EXPECT_NEAR(0.25, lostUp / 20, 0.05);
  EXPECT_NEAR(0.1, lostDown / 20, 0.05);
  EXPECT_TRUE(settled().front().ends_with(" 120")) << "the round trip";
}

TEST_F(DiagnosticsTest, ALiveRoomTellsHowLoudItsMembersAre) {
  engine->setStatsDelegate(stats);
  const auto anna = local->join("r", "anna", {.role = LumoRTCLocal::Role::broadcaster}).participant;
  const auto bob = local->join("r", "bob", {.role = LumoRTCLocal::Role::broadcaster}).participant;
  anna->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  bob->publishAudio();
  bob->mute(true);
  join(LMRTCIWRoleLiveAudience);
  EXPECT_EQ(0, engine->subscribeLiveMix(kBoth));
  EXPECT_EQ((Lines{"loud anna 72", "loud bob 0", "network 1 0 43008 0", "picture 360 640 15 41472 0 0",
                   "sound 72 1536 0 0"}),
            settled());
}

TEST_F(DiagnosticsTest, ATextComesWithExactlyOnePicture) {
  const auto anna = addPublishing("anna", Media::video);
  std::int64_t shown = 0;
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame& frame) { shown = frame.timestampMs; });
  anna->onSei([&](const std::string& text) { line(text, shown); });
  join();
  EXPECT_EQ(LocalCodeSeiNotEnabled, engine->sendSei("x"));
  engine->enableSei(true);
  publish(kVideo);
  local->setNetwork({.delay = 200ms}, {.delay = 100ms});
  EXPECT_EQ(0, engine->subscribe("anna", kVideo));
  advance(1s);
  EXPECT_EQ(0, engine->sendSei("hello"));  // with the picture 67 ms from now
  EXPECT_EQ(0, anna->sendSei("hi"));
  advance(160ms);
  EXPECT_EQ(Lines{}, told());
  advance(20ms);
  EXPECT_EQ(Lines{"sei r anna hi"}, told()) << "100 ms after the next picture";
  advance(1s);
  EXPECT_EQ(Lines{"hello 1066"}, told());
  local->setNetwork({.loss = 1}, {});
  EXPECT_EQ(0, engine->sendSei("lost"));
  advance(100ms);
  local->setNetwork({}, {});
  advance(1s);
  EXPECT_EQ(Lines{}, told()) << "with the picture";
}

TEST_F(DiagnosticsTest, TheProbeMeasuresBothDirections) {
  engine->startNetworkProbe(probe);
  advance(1s);
  EXPECT_EQ((Lines{"started 0 Success", "up 1 0 0", "down 1 0 0"}), told());
  local->setNetwork({.delay = 200ms}, {.delay = 50ms, .loss = 1});
  EXPECT_EQ("down 5 0 100", settled().front());
  local->setNetwork({.delay = 200ms}, {.delay = 50ms});
  advance(5s);
  EXPECT_EQ("finished 0 success", lastTold());
  engine->startNetworkProbe(probe);
  advance(1s);
  EXPECT_EQ((Lines{"started 0 Success", "up 3 250 0", "down 3 250 0"}), told());
  join();
  advance(1s);
  EXPECT_TRUE(lastTold().starts_with("finished 1703 ")) << "joining ends it";
}

TEST_F(DiagnosticsTest, AJoinTakesLessTimeWhenTheServerIsConnectedAhead) {
  local->setNetwork({.delay = 60ms}, {.delay = 40ms});
  for (const auto time : {300ms, 100ms, 300ms}) {
    join();
    advance(time - 1ms);
    EXPECT_FALSE(engine->room());
    advance(1ms);
    EXPECT_TRUE(engine->room());
    engine->leaveRoom();
    if (time == 300ms) engine->preconnectToMediaServer();
    advance(29s);
  }
}

TEST_F(DiagnosticsTest, TheEchoTestPlaysTheMicrophoneAfterTheInterval) {
  const auto listen = [&](int seconds) {
    std::string levels;
    for (int i = 0; i < seconds; ++i) {
      speaker = {};
      advance(1s);
      levels += speaker.tenths(300) + " ";
    }
    return levels;
  };
  ASSERT_EQ(0, engine->startEchoTest(2));
  EXPECT_EQ("0 0 10 10 0 0 10 10 ", listen(8)) << "outside a room";
  ASSERT_EQ(0, engine->startEchoTest(-5));
  EXPECT_EQ("0 10 0 10 ", listen(4)) << "at least a second";
  ASSERT_EQ(0, engine->stopEchoTest());
  EXPECT_EQ("- - ", listen(2));
  ASSERT_EQ(0, engine->startEchoTest(1));
  join();
  EXPECT_EQ("0 0 ", listen(2)) << "joining ends it";
}

}  // namespace
}  // namespace lumo::test
