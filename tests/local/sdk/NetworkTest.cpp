#include <algorithm>

#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using lumo::AudioBlock;
using lumo::Microseconds;
using lumo::NetworkModel;
using Media = LumoRTCLocal::Media;

/// The local user sends to anna, who notes what comes.
class NetworkTest : public LocalSdkTest {
 protected:
  void begin(const LMRTCLocalUser::OutputStreams& streams) {
    anna = add("anna");
    anna->onVideo([this](const std::string&, const LMRTCVideoFrame& frame) {
      times.push_back(frame.timestampMs);
      late.push_back(local->now().count() / 1000 - frame.timestampMs);
    });
    anna->onAudio([this](const std::string&, const AudioBlock& block, Microseconds time) {
      EXPECT_LT(lastTick, time) << "one block in 10 ms";
      lastTick = time;
      ++blocks;
      isSilent = std::ranges::count(block.samples, 0) == std::ssize(block.samples);
    });
    ASSERT_EQ(0, join("r"));
    ASSERT_EQ(0, publish(streams));
  }
  /// After how long anna hears that the microphone has gone silent.
  Microseconds soundLag() {
    microphone()->setRecordingVolume(0);
    Microseconds lag{0};
    for (isSilent = false; !isSilent && lag < 5s; lag += 10ms) local->advance(10ms);
    microphone()->setRecordingVolume(100);
    local->advance(2s);
    return lag - 10ms;
  }
  std::int64_t latest() const { return *std::ranges::max_element(late); }

  ParticipantPtr anna;
  std::vector<std::int64_t> times, late;  // of pictures, milliseconds
  Microseconds lastTick{-1};
  int blocks = 0;
  bool isSilent = false;
};

TEST_F(NetworkTest, MediaIsLateByBothLinksAndInOrder) {
  begin({microphone(), camera()});
  local->advance(1s);
  EXPECT_EQ(0, latest());
  EXPECT_EQ(0ms, soundLag());
  late.clear();
  local->setNetwork({.delay = 70ms}, {.delay = 1s});
  anna->setNetwork({.delay = 1s}, {.delay = 45ms, .jitter = 20ms});
  local->advance(2s);
  EXPECT_LE(115, *std::ranges::min_element(late));
  EXPECT_GE(136, latest());
  const Microseconds lag = soundLag();
  EXPECT_LE(115ms, lag);
  EXPECT_GE(160ms, lag) << "the jitter is buffered, and no more";

  local->setNetwork({}, {});
  anna->setNetwork({}, {});
  local->advance(3s);
  late.clear();
  blocks = 0;
  local->advance(1s);
  EXPECT_EQ(0, latest());
  EXPECT_EQ(0ms, soundLag());
  EXPECT_EQ(301, blocks) << "all of it, and nothing twice";
  EXPECT_TRUE(std::ranges::is_sorted(times)) << "nothing has overtaken";
}

TEST_F(NetworkTest, LossAndNarrowBandsCostPicturesAndSound) {
  begin({microphone(), camera()});
  local->setNetwork({.loss = 0.2}, {});
  local->advance(20s);
  EXPECT_NEAR(0.8 * 300, static_cast<double>(times.size()), 25);
  EXPECT_NEAR(0.8 * 2000, blocks, 60);

  times.clear();
  blocks = 0;
  local->setNetwork({}, {});
  constexpr std::int64_t kHalf = (480 * 640 * 3 / 2 * 15 + 1920 * 100) * 8 / 2;
  anna->setNetwork({}, {.bandwidth = kHalf});
  local->advance(5s);
  times.clear();
  late.clear();
  blocks = 0;
  local->advance(10s);
  const double carried = static_cast<double>(times.size()) * 480 * 640 * 12 + blocks * 1920 * 8;
  EXPECT_NEAR(1, carried / (10.0 * kHalf), 0.02) << "as much as goes through";
  EXPECT_GE(700, latest()) << "a bounded queue";
}

TEST_F(NetworkTest, WhatIsUnderWayIsDroppedWhenNobodyWantsItAnyMore) {
  const std::vector<std::pair<const char*, std::function<void()>>> ends = {
      {"unsubscribed", [this] { anna->onVideo({}); }},
      {"muted", [this] { camera()->setIsMute(true); }},
      {"unpublished", [this] { unpublish({camera()}); }},
      {"gone", [this] { anna->leave(); }},
  };
  for (const auto& [what, end] : ends) {
    local->setNetwork({}, {});
    begin({camera()});
    local->setNetwork({.delay = 1s}, {});
    local->advance(1500ms);
    EXPECT_FALSE(times.empty()) << what;
    times.clear();
    end();
    local->advance(1500ms);
    EXPECT_TRUE(times.empty()) << what;
    leave();
    anna->leave();
    camera()->setIsMute(false);
  }
  local->setNetwork({}, {});
  begin({microphone(), camera()});  // and with these under way everything ends
  local->setNetwork({.delay = 1s}, {});
  local->advance(500ms);
}

}  // namespace
