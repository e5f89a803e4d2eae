#include <gtest/gtest.h>

#include "LumoRTCLocal/media/AudioBlock.h"

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
}

}  // namespace
}  // namespace lumo
