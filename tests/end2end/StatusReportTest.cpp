#include <map>

#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

constexpr double kPictureKilobits = 480 * 640 * 1.5 * 8 / 1000;

/// What the last reports said, one line per stream, and sums over all of them.
class StatusReportTest : public CallTest {
 protected:
  using Lines = std::map<std::string, std::string>;

  StatusReportTest() {
    stats->onNetworkStats = [this](const auto& figures) {
      EXPECT_NE(std::string::npos, figures.ip.find('.'));
      note("network", {figures.type, figures.sendBitrate, figures.receiveBitrate, figures.rtt});
      ++reports;
    };
    stats->onLocalAudioStats = [this](const auto& figures) { noteSound("local sound", figures); };
    stats->onLocalVideoStats = [this](const auto& figures) {
      notePicture(figures.tiny ? "local small" : "local picture", figures);
    };
    stats->onRemoteAudioStats = [this](const auto& figures, const auto& room, const auto& user) {
      noteSound(room + " " + user + " sound", figures);
    };
    stats->onRemoteVideoStats = [this](const auto& figures, const auto& room, const auto& user) {
      notePicture(room + " " + user + " picture", figures);
    };
    stats->onRemoteCustomVideoStats = [this](const auto& figures, const auto& room, const auto& user,
                                             const auto& tag) {
      notePicture(room + " " + user + " " + tag, figures);
    };
    stats->onLiveMixVideoStats = [this](const auto& figures) { notePicture("mix picture", figures); };
    stats->onLiveMixAudioStats = [this](const auto& figures) { noteSound("mix sound", figures); };
    stats->onLiveMixMemberAudioStats = [this](const auto& user, auto volume) { note(user, {volume}); };
    engine->setStatsDelegate(stats);
  }

  void note(const std::string& what, const std::vector<std::int64_t>& figures) {
    std::string& line = lines[what] = "";
    for (const std::int64_t figure : figures) line += (line.empty() ? "" : " ") + std::to_string(figure);
  }
  template <class Figures>
  void noteSound(const std::string& what, const Figures& figures) {
    note(what, {figures.volume, figures.bitrate, std::lround(figures.packageLostRate * 100), figures.rtt});
    lost[what] += figures.packageLostRate;
  }
  template <class Figures>
  void notePicture(const std::string& what, const Figures& figures) {
    note(what, {figures.width, figures.height, figures.fps, figures.bitrate,
                std::lround(figures.packageLostRate * 100), figures.rtt});
    lost[what] += figures.packageLostRate;
    pictures[what] += static_cast<double>(figures.bitrate) / kPictureKilobits;
  }

  const std::shared_ptr<LMRTCIWStatsDelegate> stats = std::make_shared<LMRTCIWStatsDelegate>();
  Lines lines;
  std::map<std::string, double> lost, pictures;
  int reports = 0;
};

TEST_F(StatusReportTest, APerfectCallHasTheFiguresOfWhatIsSent) {
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  EXPECT_EQ(0, anna->publish("clip", Media::video));
  advance(3s);
  EXPECT_EQ(0, reports) << "not in a room";
  join();
  publish(kBoth);
  anna->onVideo([](const std::string&, const LMRTCVideoFrame&) {});
  add("bob")->onVideo([](const std::string&, const LMRTCVideoFrame&) {}, true);
  EXPECT_EQ(0, engine->subscribe("anna", kBoth));
  EXPECT_EQ(0, engine->subscribeCustomStream("anna", "clip", kVideo, false));
  advance(3s);
  EXPECT_EQ(3, reports);
  EXPECT_EQ((Lines{{"network", "1 60480 112128 0"},
                   {"local picture", "480 640 15 55296 0 0"},
                   {"local small", "180 240 10 5184 0 0"},
                   {"local sound", "72 0 0 0"},  // heard, and sent to nobody
                   {"r anna picture", "480 640 15 55296 0 0"},
                   {"r anna clip", "480 640 15 55296 0 0"},
                   {"r anna sound", "72 1536 0 0"}}),
            lines);
  EXPECT_EQ(0, engine->leaveRoom());
  advance(3s);
  EXPECT_EQ(3, reports);
}

TEST_F(StatusReportTest, APoorNetworkShowsInTheFigures) {
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  int arrived = 0;
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame&) { ++arrived; });
  join();
  publish(kBoth);
  EXPECT_EQ(0, engine->subscribe("anna", kBoth));
  local->setNetwork({.delay = 80ms, .loss = 0.25}, {.delay = 40ms, .loss = 0.1});
  advance(20s);
  ASSERT_EQ(20, reports);
  EXPECT_EQ("120", lines["network"].substr(lines["network"].rfind(' ') + 1)) << "both ways";
  EXPECT_NEAR(0.25, lost["local picture"] / reports, 0.05);
  EXPECT_NEAR(0.1, lost["r anna picture"] / reports, 0.05);
  EXPECT_NEAR(0.1, lost["r anna sound"] / reports, 0.03);
  EXPECT_NEAR(arrived, pictures["local picture"], 2) << "what was sent has arrived, or is under way";
  EXPECT_NEAR(0.9 * 300, pictures["r anna picture"], 15);
}

TEST_F(StatusReportTest, ALiveRoomTellsHowLoudItsMembersAre) {
  const auto anna = local->join("r", "anna", {.role = LumoRTCLocal::Role::broadcaster}).participant;
  const auto bob = local->join("r", "bob", {.role = LumoRTCLocal::Role::broadcaster}).participant;
  anna->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  bob->publishAudio();
  const auto setup = std::make_shared<LMRTCIWRoomSetup>();
  setup->role = LMRTCIWRoleLiveAudience;
  ASSERT_EQ(0, engine->joinRoom("r", setup));
  advance(0us);
  EXPECT_EQ(0, engine->subscribeLiveMix(kBoth));
  bob->mute(true);
  advance(3s);
  EXPECT_EQ((Lines{{"network", "1 0 43008 0"},
                   {"mix picture", "360 640 15 41472 0 0"},
                   {"mix sound", "72 1536 0 0"},
                   {"anna", "72"},
                   {"bob", "0"}}),
            lines);
}

}  // namespace
}  // namespace lumo::test
