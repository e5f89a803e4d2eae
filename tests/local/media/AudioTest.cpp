#include <gtest/gtest.h>

#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

AudioBlock constant(std::int16_t left, std::int16_t right) {
  AudioBlock block;
  for (std::size_t i = 0; i < AudioBlock::kSamples; i += 2) {
    block.samples[i] = left;
    block.samples[i + 1] = right;
  }
  return block;
}

TEST(ToneSourceTest, GivesItsFrequencyAtItsLevelWithoutSeams) {
  ToneSource tone(440, 0.25);
  std::vector<std::int16_t> second;
  AudioBlock block;
  for (int i = 0; i < 100; ++i) {
    tone.read(block);
    ASSERT_EQ(block.samples[478], block.samples[479]) << "both channels";
    second.insert(second.end(), block.samples.begin(), block.samples.end());
  }
  EXPECT_NEAR(0.25, test::toneLevel(second, 440), 0.0005);
  for (const double other : {400.0, 441.0, 880.0, 1320.0})
    EXPECT_LT(test::toneLevel(second, other), 0.0005) << other;
}

TEST(AudioMixTest, SaturatesTheSumAndNotItsParts) {
  AudioMix mix;
  AudioBlock out;
  mix.add(constant(30000, -30000));
  mix.add(constant(30000, -30000));
  mix.write(out);
  EXPECT_EQ(constant(32767, -32768).samples, out.samples);
  mix.add(constant(-30000, 30000));
  mix.write(out);
  EXPECT_EQ(constant(30000, -30000).samples, out.samples);
  mix.clear();
  mix.add(constant(1001, -1000), 0.5);
  mix.add(constant(1000, 100), 2);
  mix.add(constant(7, 7), 0);
  mix.write(out);
  EXPECT_EQ(constant(2500, -300).samples, out.samples);
}

}  // namespace
}  // namespace lumo
