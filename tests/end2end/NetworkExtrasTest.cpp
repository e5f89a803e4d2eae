#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

using Lines = std::vector<std::string>;

/// What the host and anna hear, one line each.
class NetworkExtrasTest : public CallTest {
 protected:
  NetworkExtrasTest() {
    const auto coded = [this](const char* what) {
      return [this, what](std::int64_t code, const std::string&) {
        heard.push_back(what + std::to_string(code));
      };
    };
    const auto measured = [this](const char* direction) {
      return [this, direction](const LMRTCIWNetworkProbeStats& figures) {
        heard.push_back(direction + std::to_string(figures.qualityLevel) + " " + std::to_string(figures.rtt) +
                        " " + std::to_string(std::lround(figures.packetLostRate * 10)));
      };
    };
    delegate->onRoomJoined = coded("joined ");
    delegate->onNetworkProbeStarted = coded("started ");
    delegate->onNetworkProbeStopped = coded("stopped ");
    delegate->onSeiReceived = [this](const auto& room, const auto& user, const auto& sei) {
      heard.push_back(room + " " + user + ": " + sei);
    };
    probe->onNetworkProbeUpLinkStats = measured("up ");
    probe->onNetworkProbeDownLinkStats = measured("down ");
    probe->onNetworkProbeFinished = coded("finished ");
  }

  Lines take() { return std::exchange(heard, {}); }
  /// After how long a join is answered.
  Microseconds joinTime() {
    EXPECT_EQ(0, engine->joinRoom("r", std::make_shared<LMRTCIWRoomSetup>()));
    Microseconds time{0};
    for (local->advance(0us); heard.empty() && time < 10s; time += 10ms) local->advance(10ms);
    EXPECT_EQ(Lines{"joined 0"}, take());
    engine->leaveRoom();
    advance(0us);
    return time;
  }

  Lines heard;
  const std::shared_ptr<LMRTCIWNetworkProbeDelegate> probe = std::make_shared<LMRTCIWNetworkProbeDelegate>();
};

TEST_F(NetworkExtrasTest, ATextComesWithExactlyOnePicture) {
  const auto anna = addPublishing("anna", Media::video);
  std::int64_t shown = 0;
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame& frame) { shown = frame.timestampMs; });
  anna->onSei([&](const std::string& text) { heard.push_back(text + " at " + std::to_string(shown)); });
  join();
  EXPECT_EQ(LocalCodeSeiNotEnabled, engine->sendSei("x"));
  engine->enableSei(true);
  advance(0us);
  EXPECT_EQ(LocalCodeNotPublished, engine->sendSei("x"));
  publish(kVideo);
  EXPECT_EQ(LocalCodeSeiTooLong, engine->sendSei(std::string(4097, 'x')));

  local->setNetwork({.delay = 200ms}, {.delay = 100ms});
  EXPECT_EQ(0, engine->subscribe("anna", kVideo));
  advance(1s);
  take();
  EXPECT_EQ(0, engine->sendSei("hello"));  // with the picture 67 ms from now
  EXPECT_EQ(0, anna->sendSei("hi"));
  advance(160ms);
  EXPECT_EQ(0u, heard.size());
  advance(20ms);
  EXPECT_EQ(Lines{"r anna: hi"}, take()) << "100 ms after the next picture";
  advance(1s);
  EXPECT_EQ(Lines{"hello at 1066"}, take());
  local->setNetwork({.loss = 1}, {});
  EXPECT_EQ(0, engine->sendSei("lost"));
  advance(100ms);
  local->setNetwork({}, {});
  advance(1s);
  EXPECT_EQ(Lines{}, take()) << "with the picture";
  anna->onVideo({});
  EXPECT_EQ(0, engine->sendSei("to nobody"));
  anna->onVideo([](const std::string&, const LMRTCVideoFrame&) {});
  advance(1s);
  EXPECT_EQ(Lines{}, take());
}

TEST_F(NetworkExtrasTest, TheProbeMeasuresBothDirections) {
  EXPECT_EQ(0, engine->startNetworkProbe(probe));
  EXPECT_EQ(0, engine->startNetworkProbe(probe));
  advance(1s);
  EXPECT_EQ((Lines{"started 0", "started 1701", "up 1 0 0", "down 1 0 0"}), take());
  local->setNetwork({.delay = 200ms}, {.delay = 50ms, .loss = 1});
  advance(2s);
  take();
  advance(1s);
  EXPECT_EQ((Lines{"down 5 0 10"}), Lines({take().at(1)}));
  local->setNetwork({.delay = 200ms}, {.delay = 50ms});
  advance(5s);
  EXPECT_EQ("finished 0", take().back());

  engine->startNetworkProbe(probe);
  advance(2s);
  EXPECT_EQ((Lines{"started 0", "up 3 250 0", "down 3 250 0", "up 3 250 0", "down 3 250 0"}), take());
  join();
  advance(1s);
  EXPECT_EQ((Lines{"finished 1703", "joined 0"}), take());
  engine->startNetworkProbe(probe);
  engine->stopNetworkProbe();
  engine->leaveRoom();
  engine->startNetworkProbe(probe);
  engine->stopNetworkProbe();
  advance(9s);
  EXPECT_EQ((Lines{"started 1102", "stopped 1702", "started 0", "stopped 0"}), take());
  engine->startNetworkProbe(probe);  // and with this one under way everything ends
  advance(100ms);
}

TEST_F(NetworkExtrasTest, AJoinTakesLessTimeWhenTheServerIsConnectedAhead) {
  EXPECT_EQ(0ms, joinTime());
  local->setNetwork({.delay = 60ms}, {.delay = 40ms});
  EXPECT_EQ(300ms, joinTime());
  engine->preconnectToMediaServer();
  advance(150ms);
  EXPECT_EQ(150ms, joinTime()) << "what is left of the connecting, and one round trip";
  engine->preconnectToMediaServer();
  advance(29s);
  EXPECT_EQ(100ms, joinTime());
  EXPECT_EQ(300ms, joinTime()) << "for one join";
  engine->preconnectToMediaServer();
  advance(31s);
  EXPECT_EQ(300ms, joinTime()) << "too late";
}

}  // namespace
}  // namespace lumo::test
