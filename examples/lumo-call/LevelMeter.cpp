#include "examples/lumo-call/LevelMeter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

constexpr int kBlocksPerReading = 10;
constexpr double kSamplesPerReading = double{kBlocksPerReading} * lumo::AudioBlock::kSamplesPerChannel;
constexpr double kFullScale = 32768;

}  // namespace

LevelMeter::LevelMeter(const std::vector<double>& frequenciesHz) {
  for (const double frequency : frequenciesHz) {
    const double step = 2 * std::numbers::pi * frequency / lumo::AudioBlock::kSampleRate;
    tones_.push_back({{frequency, 0}, 2 * std::cos(step), 0, 0});
  }
}

void LevelMeter::add(const lumo::AudioBlock& block) {
  const std::lock_guard lock(mutex_);
  for (Tone& tone : tones_) {
    for (std::size_t i = 0; i < lumo::AudioBlock::kSamples; i += lumo::AudioBlock::kChannels) {
      const double next = block.samples[i] + tone.coefficient * tone.last - tone.beforeLast;
      tone.beforeLast = std::exchange(tone.last, next);
    }
  }
  if (++blocks_ < kBlocksPerReading) return;
  blocks_ = 0;
  for (Tone& tone : tones_) finish(tone);
}

std::vector<LevelMeter::Level> LevelMeter::levels() const {
  const std::lock_guard lock(mutex_);
  std::vector<Level> levels;
  for (const Tone& tone : tones_) levels.push_back(tone.level);
  return levels;
}

void LevelMeter::finish(Tone& tone) {
  const double power = tone.last * tone.last + tone.beforeLast * tone.beforeLast -
                       tone.coefficient * tone.last * tone.beforeLast;
  const double amplitude = 2 * std::sqrt(std::max(power, 0.0)) / kSamplesPerReading / kFullScale;
  tone.level.highest = std::max(tone.level.highest, amplitude);
  tone.last = 0;
  tone.beforeLast = 0;
}
