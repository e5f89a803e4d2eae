#include "LumoRTCLocal/sdk/AudioTap.h"

#include <chrono>
#include <cstdint>
#include <utility>

namespace lumo {

void AudioTap::set(LMRTCAudioDataCallback callback) {
  callback_.set(callback ? std::make_shared<const LMRTCAudioDataCallback>(std::move(callback)) : nullptr);
}

void AudioTap::deliver(const AudioBlock& block, Microseconds time) const {
  const auto callback = callback_.get();
  if (!callback) return;
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time);
  (*callback)({.bytes = reinterpret_cast<const std::uint8_t*>(block.samples.data()),
               .length = static_cast<std::int32_t>(sizeof(block.samples)),
               .channels = AudioBlock::kChannels,
               .sampleRate = AudioBlock::kSampleRate,
               .bytesPerSample = sizeof(std::int16_t),
               .samples = AudioBlock::kSamplesPerChannel,
               .renderTimeMs = static_cast<std::uint64_t>(milliseconds.count())});
}

}  // namespace lumo
