#include "LumoRTCLocal/media/AudioBlock.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

namespace lumo {
namespace {

constexpr double kFullTurn = 2 * std::numbers::pi;
constexpr std::int32_t kLowest = std::numeric_limits<std::int16_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int16_t>::max();

}  // namespace

ToneSource::ToneSource(double frequencyHz, double amplitude)
    : step_(kFullTurn * frequencyHz / AudioBlock::kSampleRate), amplitude_(amplitude * kHighest) {}

void ToneSource::read(AudioBlock& block) {
  for (std::size_t i = 0; i < AudioBlock::kSamples; i += AudioBlock::kChannels) {
    const auto sample = static_cast<std::int16_t>(std::lrint(amplitude_ * std::sin(phase_)));
    block.samples[i] = sample;
    block.samples[i + 1] = sample;
    phase_ += step_;
    if (phase_ >= kFullTurn) phase_ -= kFullTurn;
  }
}

void AudioMix::add(const AudioBlock& block, double gain) {
  if (gain == 1.0) {
    std::ranges::transform(sums_, block.samples, sums_.begin(),
                           [](std::int32_t sum, std::int16_t sample) { return sum + sample; });
    return;
  }
  std::ranges::transform(sums_, block.samples, sums_.begin(), [gain](std::int32_t sum, std::int16_t sample) {
    return sum + static_cast<std::int32_t>(std::lrint(sample * gain));
  });
}

void AudioMix::add(const AudioMix& other) {
  std::ranges::transform(sums_, other.sums_, sums_.begin(), std::plus<>());
}

void AudioMix::write(AudioBlock& out) const {
  std::ranges::transform(sums_, out.samples.begin(), [](std::int32_t sum) {
    return static_cast<std::int16_t>(std::clamp(sum, kLowest, kHighest));
  });
}

}  // namespace lumo
