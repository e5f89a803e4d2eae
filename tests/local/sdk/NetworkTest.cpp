#include <algorithm>

#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using lumo::Microseconds;

/// The local user sends to anna, who notes what comes.
class NetworkTest : public LocalSdkTest {
 protected:
  NetworkTest() {
    anna = add("anna");
    anna->onVideo([this](const std::string&, const LMRTCVideoFrame& frame) {
      EXPECT_LT(newest, frame.timestampMs) << "nothing overtakes";
      newest = frame.timestampMs;
      late.push_back(local->now().count() / 1000 - newest);
    });
    anna->onAudio([this](const std::string&, const lumo::AudioBlock& block, Microseconds time) {
      EXPECT_LT(lastTick, time) << "one block in 10 ms";
      lastTick = time;
      ++blocks;
      isSilent = std::ranges::count(block.samples, 0) == std::ssize(block.samples);
    });
    EXPECT_EQ(0, join("r"));
    EXPECT_EQ(0, publish({microphone(), camera()}));
  }

  void measure(Microseconds duration) {
    late.clear();
    blocks = 0;
    local->advance(duration);
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
  std::pair<std::int64_t, std::int64_t> lateness() const {
    return {*std::ranges::min_element(late), *std::ranges::max_element(late)};
  }

  ParticipantPtr anna;
  std::int64_t newest = -1;
  std::vector<std::int64_t> late;  // of pictures, milliseconds
  Microseconds lastTick{-1};
  int blocks = 0;
  bool isSilent = false;
};

TEST_F(NetworkTest, MediaIsLateByBothLinksAndInOrder) {
  local->setNetwork({.delay = 70ms}, {.delay = 1s});
  anna->setNetwork({.delay = 1s}, {.delay = 45ms, .jitter = 20ms});
  measure(2s);
  EXPECT_LE(115, lateness().first);
  EXPECT_GE(136, lateness().second);
  const Microseconds lag = soundLag();
  EXPECT_LE(115ms, lag);
  EXPECT_GE(160ms, lag) << "the jitter is buffered, and no more";

  local->setNetwork({}, {});
  anna->setNetwork({}, {});
  local->advance(3s);
  measure(1s);
  EXPECT_EQ(std::pair(0L, 0L), lateness());
  EXPECT_EQ(100, blocks) << "all of it, and nothing twice";
  EXPECT_EQ(0ms, soundLag());
}

TEST_F(NetworkTest, LossAndNarrowBandsCostPicturesAndSound) {
  local->setNetwork({.loss = 0.2}, {});
  measure(20s);
  EXPECT_NEAR(0.8 * 300, static_cast<double>(late.size()), 25);
  EXPECT_NEAR(0.8 * 2000, blocks, 60);

  local->setNetwork({}, {});
  constexpr std::int64_t kHalf = (480 * 640 * 3 / 2 * 15 + 1920 * 100) * 8 / 2;
  anna->setNetwork({}, {.bandwidth = kHalf});
  local->advance(5s);
  measure(10s);
  const double carried = static_cast<double>(late.size()) * 480 * 640 * 12 + blocks * 1920 * 8;
  EXPECT_NEAR(1, carried / (10.0 * kHalf), 0.02) << "as much as goes through";
  EXPECT_GE(700, lateness().second) << "a bounded queue";

  anna->setNetwork({}, {});
  microphone()->setIsMute(true);
  local->setNetwork({.bandwidth = 100'000}, {});
  local->advance(1s);  // enough for one picture to enter, which takes half a minute
  microphone()->setIsMute(false);
  local->setNetwork({}, {});
  measure(1s);
  EXPECT_EQ(std::pair(0L, 0L), lateness());
  EXPECT_LE(99, blocks) << "a wide band has no queue";
}

TEST_F(NetworkTest, WhatIsUnderWayIsDroppedWhenNobodyWantsItAnyMore) {
  const std::pair<std::function<void()>, std::function<void()>> ends[] = {
      {[this] { camera()->setIsMute(true); }, [this] { camera()->setIsMute(false); }},
      {[this] { unpublish({camera()}); }, [this] { publish({camera()}); }},
      {[this] { anna->leave(); }, [] {}},
  };
  local->setNetwork({.delay = 1s}, {});
  for (const auto& [end, begin] : ends) {
    measure(1500ms);
    EXPECT_FALSE(late.empty());
    end();
    measure(1500ms);
    EXPECT_TRUE(late.empty());
    begin();
  }
}

}  // namespace
