#include <algorithm>
#include <cmath>
#include <functional>

#include "tests/end2end/CallTest.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

constexpr double kTone = 0.2;  // the amplitude of every tone

/// Collects sound, and tells how much of each tone is in it.
struct Ear {
  Ear() {
    observer->onAudioFrame = [this](const LMRTCIWAudioFrame& frame) {
      const std::vector<std::int64_t> shape = {frame.length, frame.channels, frame.sampleRate,
                                               frame.bytesPerSample, frame.samples};
      EXPECT_EQ((std::vector<std::int64_t>{1920, 2, 48000, 2, 480}), shape);
      add(reinterpret_cast<const std::int16_t*>(frame.bytes));
      times.push_back(frame.renderTimeMs);
    };
  }

  void add(const std::int16_t* block) { samples.insert(samples.end(), block, block + AudioBlock::kSamples); }

  /// What came in 100 ms: the levels of the tones of 300, 400 and 500 Hz in tenths; "-" for nothing at all.
  std::string take() {
    const auto heard = std::exchange(samples, {});
    if (heard.empty()) return "-";
    std::string text = heard.size() == 10 * AudioBlock::kSamples ? "" : "not ten blocks: ";
    for (const double frequency : {300.0, 400.0, 500.0}) {
      text += std::to_string(std::lround(toneLevel(heard, frequency) / kTone * 10)) + " ";
    }
    text.pop_back();
    return text;
  }

  std::vector<std::int16_t> samples;
  std::vector<std::uint64_t> times;
  const std::shared_ptr<LMRTCIWAudioFrameDelegate> observer = std::make_shared<LMRTCIWAudioFrameDelegate>();
};

class AudioObserverTest : public CallTest {
 protected:
  struct Step {
    const char* what;
    std::function<void()> act;
    std::vector<std::string> heard;  ///< by the ears, in the next 100 ms
  };

  void run(const std::vector<Ear*>& ears, const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      step.act();
      advance(0us);
      for (Ear* const ear : ears) ear->samples.clear();
      advance(100ms);
      std::vector<std::string> heard;
      std::ranges::transform(ears, std::back_inserter(heard), &Ear::take);
      EXPECT_EQ(step.heard, heard) << step.what;
    }
  }
};

TEST_F(AudioObserverTest, TheMicrophoneIsHeardWhereItIsCapturedAndWhereItIsSent) {
  const auto anna = add("anna");
  Ear captured, sent, member;
  anna->onAudio(
      [&](const std::string&, const AudioBlock& block, Microseconds) { member.add(block.samples.data()); });
  const auto setObservers = [&](const auto& first, const auto& second) {
    EXPECT_EQ(0, engine->setLocalAudioCapturedDelegate(first));
    EXPECT_EQ(0, engine->setLocalAudioMixedDelegate(second));
  };
  run({&captured, &sent, &member},
      {
          {"nothing", [] {}, {"-", "-", "-"}},
          {"observers", [&] { setObservers(captured.observer, sent.observer); }, {"10 0 0", "-", "-"}},
          {"join", [&] { join(); }, {"10 0 0", "-", "-"}},
          {"publish", [&] { publish(kAudio); }, {"10 0 0", "10 0 0", "10 0 0"}},
          {"half", [&] { engine->adjustLocalVolume(50); }, {"5 0 0", "5 0 0", "5 0 0"}},
          {"full", [&] { engine->adjustLocalVolume(100); }, {"10 0 0", "10 0 0", "10 0 0"}},
          {"mute", [&] { engine->muteLocalStream(kAudio, true); }, {"10 0 0", "-", "-"}},
          {"unmute", [&] { engine->muteLocalStream(kAudio, false); }, {"10 0 0", "10 0 0", "10 0 0"}},
          {"off", [&] { engine->enableMicrophone(false); }, {"-", "-", "-"}},
          {"on", [&] { engine->enableMicrophone(true); }, {"10 0 0", "10 0 0", "10 0 0"}},
          {"nobody subscribed", [&] { anna->onAudio({}); }, {"10 0 0", "10 0 0", "-"}},
          {"removed", [&] { setObservers(nullptr, nullptr); }, {"-", "-", "-"}},
      });
  ASSERT_EQ(90u, captured.times.size());
  for (std::size_t i = 1; i < 10; ++i) EXPECT_EQ(captured.times[0] + 10 * i, captured.times[i]);
  EXPECT_EQ(std::vector<std::uint64_t>(sent.times.size(), 0), sent.times);
}

TEST_F(AudioObserverTest, ReceivedSoundIsHeardPerStreamAndMixed) {
  addPublishing("anna", Media::audio);
  addPublishing("bob", Media::audioAndVideo, "music");
  join();
  publish(kAudio);
  Ear anna, music, mix, played;
  local->setSpeaker([&](const AudioBlock& block, Microseconds) { played.add(block.samples.data()); });
  const auto setObservers = [&](bool on) {
    EXPECT_EQ(0, engine->setRemoteAudioReceivedDelegate(on ? anna.observer : nullptr, "anna"));
    EXPECT_EQ(0, engine->setRemoteCustomAudioReceivedDelegate(on ? music.observer : nullptr, "bob", "music"));
    EXPECT_EQ(0, engine->setRemoteAudioMixedDelegate(on ? mix.observer : nullptr));
  };
  const std::vector<std::string> all = {"0 10 0", "0 0 10", "0 10 10", "0 10 10"};
  run({&anna, &music, &mix, &played},
      {
          {"nothing subscribed", [&] { setObservers(true); }, {"-", "-", "0 0 0", "0 0 0"}},
          {"anna", [&] { engine->subscribe("anna", kAudio); }, {"0 10 0", "-", "0 10 0", "0 10 0"}},
          {"music", [&] { engine->subscribeCustomStream("bob", "music", kAudio, false); }, all},
          {"mute anna",
           [&] { engine->muteRemoteStream("anna", kAudio, true); },
           {"-", all[1], all[1], all[1]}},
          {"unmute anna", [&] { engine->muteRemoteStream("anna", kAudio, false); }, all},
          {"mute all", [&] { engine->muteAllRemoteAudioStreams(true); }, {"-", "-", "0 0 0", "0 0 0"}},
          {"unmute all", [&] { engine->muteAllRemoteAudioStreams(false); }, all},
          {"speaker off", [&] { engine->enableSpeaker(false); }, {all[0], all[1], all[2], "-"}},
          {"speaker on", [&] { engine->enableSpeaker(true); }, all},
          {"unsubscribed", [&] { engine->unsubscribe("anna", kAudio); }, {"-", all[1], all[1], all[1]}},
          {"removed", [&] { setObservers(false); }, {"-", "-", "-", all[1]}},
          {"left", [&] { engine->leaveRoom(); }, {"-", "-", "-", "-"}},
      });
  EXPECT_EQ(anna.times[0] + 10, anna.times[1]);
  EXPECT_EQ(std::vector<std::uint64_t>(mix.times.size(), 0), mix.times);
}

}  // namespace
}  // namespace lumo::test
