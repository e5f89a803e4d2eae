#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

/// The values of a record's description, in their order.
template <class Record>
std::string values(const Record& record) {
  std::istringstream text(record.description());
  std::string out;
  for (std::string word; text >> word;) {
    if (word == "=" && text >> word) out += (out.empty() ? "" : " ") + word.substr(0, word.size() - 1);
  }
  return out;
}

class StatisticsTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    record(stats->onNetworkStats, "network");
    record(stats->onLocalAudioStats, "localAudio");
    record(stats->onLocalVideoStats, "localVideo");
    record(stats->onLocalCustomAudioStats, "localCustomAudio");
    record(stats->onLocalCustomVideoStats, "localCustomVideo");
    record(stats->onRemoteAudioStats, "remoteAudio");
    record(stats->onRemoteVideoStats, "remoteVideo");
    record(stats->onRemoteCustomAudioStats, "remoteCustomAudio");
    record(stats->onRemoteCustomVideoStats, "remoteCustomVideo");
    record(stats->onLiveMixAudioStats, "mixAudio");
    record(stats->onLiveMixVideoStats, "mixVideo");
    const auto hear = [this](const auto&... values) { loud.insert(((" " + fake::word(values)) + ...)); };
    stats->onLiveMixMemberAudioStats = hear;
    stats->onLiveMixMemberCustomAudioStats = hear;
    expect(0, engine->setStatsDelegate(stats),
           {"T setStatsDelegate delegate:1", "-> setStatusReportDelegate engine"});
  }
  template <class Record, class... More>
  void record(std::function<void(const Record&, More...)>& field, const std::string& name) {
    field = [log = trace, name](const Record& record, const More&... more) {
      log->add(((name + " " + values(record)) + ... + (" " + more)));
    };
  }
  void report(const LMRTCStatusForm& form) const {
    sdk->engine->statusDelegate.get().lock()->didReportStatusForm(form);
  }
  static LMRTCStreamStatus status(const char* media, std::int64_t kind, std::string id,
                                  std::string codec = "") {
    return {.mediaType = media,
            .codecName = std::move(codec),
            .bitRate = 63.5F,
            .frameRate = 15,
            .frameWidth = 48,
            .frameHeight = 64,
            .packetLoss = 0.005F,
            .audioLevel = 9,
            .rtt = 20,
            .mediaStreamType = kind,
            .streamId = id,
            .userId = id.substr(0, id.find('_'))};
  }

  const std::shared_ptr<LMRTCIWStatsDelegate> stats = std::make_shared<LMRTCIWStatsDelegate>();
  std::multiset<std::string> loud;
};

constexpr auto* kVideo = LumoRTCMediaTypeVideo;
constexpr auto* kAudio = LumoRTCMediaTypeAudio;

TEST_F(StatisticsTest, RemovingTheListener) {
  expect(0, engine->setStatsDelegate(nullptr),
         {"T setStatsDelegate delegate:0", "-> setStatusReportDelegate nil"});
}

TEST_F(StatisticsTest, TheNetworkRecordNamesKnownNetworksInAnyCase) {
  for (const auto& [name, type] : std::vector<std::pair<std::optional<std::string>, int>>{
           {"WLAN", 1}, {"wWan", 2}, {"lan", 0}, {std::nullopt, 0}}) {
    report({name, "1.2.3.4", 1234.9F, -1.5F, 8, {}, {}});
    EXPECT_TRACE("network " + std::to_string(type) + " 1.2.3.4 1234 -1 8");
  }
  report({});
  EXPECT_TRACE("network 0 Unknown 0 0 0");
}

TEST_F(StatisticsTest, SentStreamsAreReportedByKindWithRoundedBitRates) {
  LMRTCStatusForm form;
  form.sendStats = {status(kVideo, 0, "me_cam", "H264"),
                    status(kVideo, 3, "me_cam_tiny"),
                    status(kAudio, 0, "me_mic", "Opus"),
                    status("data", 0, "me_x"),
                    status(kVideo, 1, "me_a_screen_tiny"),
                    status(kAudio, 4, "me_screen", "pcmu"),
                    status(kVideo, 1, "me")};
  report(form);
  EXPECT_TRACE("network 0 Unknown 0 0 0", "localVideo 0 0 64 15 48 64 0.01 20",
               "localVideo 1 0 64 15 48 64 0.01 20", "localAudio 111 64 9 0.01 20",
               "localCustomVideo 0 0 64 15 48 64 0.01 20 tiny", "localCustomAudio 0 64 9 0.01 20 screen");
}

TEST_F(StatisticsTest, ReceivedStreamsNameTheRoomOfTheirUserAndTruncateBitRates) {
  const auto sub = make<fake::OtherRoom>("r2");
  sub->users = {user("u2")};
  room->users = {user("u1")};
  join();
  engine->setSubs({{"r2", sub}});
  LMRTCStatusForm form;
  form.recvStats = {status(kVideo, 0, "u1_cam"),      status(kAudio, 0, "u2_mic", "OPUS"),
                    status(kAudio, 0, "u9_mic"),      status(kVideo, 2, "mix_v"),
                    status(kAudio, 2, "mix_a"),       status(kVideo, 1, "u2_screen"),
                    status(kAudio, 5, "u1_b_screen"), status(kVideo, 1, "u1"),
                    status(kAudio, 1, "u9_x"),        status("data", 0, "u1_x")};
  report(form);
  EXPECT_TRACE("network 0 Unknown 0 0 0", "remoteVideo 0 63 15 48 64 0.01 20 r1 u1",
               "remoteAudio 111 63 9 0.01 20 r2 u2", "mixVideo 0 63 15 48 64 0.01 20",
               "mixAudio 0 63 9 0.01 20", "remoteCustomVideo 0 63 15 48 64 0.01 20 r2 u2 screen",
               "remoteCustomAudio 0 63 9 0.01 20 r1 u1 screen");
}

TEST_F(StatisticsTest, LiveLevelsAreCompletedBySilentStreams) {
  const auto sub = make<fake::OtherRoom>("r2");
  const auto tagged = make<fake::AudioInput>("u2", "mic2");
  sub->users = {user("u2", {tagged})};
  room->users = {user("u1", {audio("u1"), video("u1")}), user("u3", {audio("u3")})};
  join();
  engine->setSubs({{"r2", sub}});
  LMRTCLiveAudioStatus first, later, odd;
  first.updateUserId("u1", "u1_LumoCloudRTC");
  first.setAudioLevel(1);
  later = first;
  later.setAudioLevel(5);
  odd.updateUserId("long-user", "short");
  sdk->engine->statusDelegate.get().lock()->didReportLiveAudioStatus({first, later, odd});
  EXPECT_EQ((std::multiset<std::string>{" u1 5", " u2 mic2 0", " u3 0"}), loud);
}

}  // namespace
}  // namespace lumo
