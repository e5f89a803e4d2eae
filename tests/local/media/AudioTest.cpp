#include <gtest/gtest.h>

#include "LumoRTCLocal/media/AudioBlock.h"

namespace {

TEST(AudioMixTest, SaturatesTheSumAndNotItsParts) {
  lumo::AudioMix mix;
  lumo::AudioBlock loud, out;
  loud.samples.fill(-30000);
  mix.add(loud);
  mix.add(loud);
  mix.write(out);
  EXPECT_EQ(-32768, out.samples.back());
  loud.samples.fill(30000);
  mix.add(loud);
  mix.write(out);
  EXPECT_EQ(-30000, out.samples.back());
}

}  // namespace
