#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using Media = LumoRTCLocal::Media;

constexpr double kTone = 0.2;  // the amplitude of every tone
constexpr double kTolerance = 0.005;

class AudioFlowTest : public LocalSdkTest {
 protected:
  /// The levels of the local tone and those of the first two participants, in the next 100 ms.
  std::vector<int> levels(ToneMeter& meter) {
    meter.clear();
    local->advance(100ms);
    std::vector<int> tenths;
    for (const double frequency : {300.0, 400.0, 500.0}) {
      tenths.push_back(static_cast<int>(std::lround(meter.level(frequency) / kTone * 10)));
    }
    return tenths;
  }
  using Levels = std::vector<int>;
};

TEST_F(AudioFlowTest, TheSpeakerPlaysTheMixOfWhatIsSubscribed) {
  const auto anna = addPublishing("anna", Media::audio);
  const auto bob = addPublishing("bob", Media::audio);
  ToneMeter speaker;
  lumo::Microseconds last{0};
  local->setSpeaker([&](const lumo::AudioBlock& block, lumo::Microseconds time) {
    EXPECT_LT(last, time);
    last = time;
    speaker.add(block);
  });
  local->advance(100ms);
  EXPECT_EQ(0u, speaker.blocks()) << "nothing is played outside a room";
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({microphone()}));
  EXPECT_EQ((Levels{0, 0, 0}), levels(speaker)) << "silence, and never the own voice";
  EXPECT_EQ(10u, speaker.blocks());

  ASSERT_EQ(0, subscribe({stream("anna")}));
  EXPECT_EQ((Levels{0, 10, 0}), levels(speaker));
  ASSERT_EQ(0, subscribe({stream("bob")}));
  EXPECT_EQ((Levels{0, 10, 10}), levels(speaker));
  EXPECT_EQ(0, anna->mute(true));
  EXPECT_EQ((Levels{0, 0, 10}), levels(speaker));
  EXPECT_EQ(0, anna->mute(false));
  stream("bob")->setIsMute(true);
  EXPECT_EQ((Levels{0, 10, 0}), levels(speaker));
  stream("bob")->setIsMute(false);
  ASSERT_EQ(0, unsubscribe({stream("anna")}));
  EXPECT_EQ((Levels{0, 0, 10}), levels(speaker));
  EXPECT_EQ(0, bob->leave());
  EXPECT_EQ((Levels{0, 0, 0}), levels(speaker));
  EXPECT_EQ(0, leave());
  speaker.clear();
  local->advance(100ms);
  EXPECT_EQ(0u, speaker.blocks());
}

TEST_F(AudioFlowTest, ParticipantsHearTheMicrophone) {
  const auto anna = addPublishing("anna", Media::audio);
  const auto bob = add("bob");
  ToneMeter heard;
  bob->onAudio([&](const std::string& tag, const lumo::AudioBlock& block, lumo::Microseconds) {
    EXPECT_EQ(kLMRTCDefaultStreamTag, tag);
    heard.add(block);
  });
  ASSERT_EQ(0, join("r"));
  EXPECT_EQ((Levels{0, 0, 0}), levels(heard));
  ASSERT_EQ(0, publish({microphone()}));
  EXPECT_EQ((Levels{10, 0, 0}), levels(heard));
  microphone()->setRecordingVolume(50);
  EXPECT_EQ((Levels{5, 0, 0}), levels(heard));
  microphone()->setRecordingVolume(250);
  EXPECT_EQ((Levels{25, 0, 0}), levels(heard));
  microphone()->setRecordingVolume(100);
  microphone()->setIsMute(true);
  levels(heard);
  EXPECT_EQ(0u, heard.blocks()) << "a muted stream sends nothing, not silence";
  ASSERT_EQ(0, unpublish({microphone()}));
  ASSERT_EQ(0, publish({microphone()}));
  levels(heard);
  EXPECT_EQ(0u, heard.blocks()) << "still muted";
  microphone()->setIsMute(false);
  EXPECT_EQ((Levels{10, 0, 0}), levels(heard));
  EXPECT_NEAR(kTone, heard.level(300), kTolerance);
  bob->onAudio({});
  levels(heard);
  EXPECT_EQ(0u, heard.blocks());
}

}  // namespace
