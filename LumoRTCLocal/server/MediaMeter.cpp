#include "LumoRTCLocal/server/MediaMeter.h"

#include <algorithm>
#include <cmath>

namespace lumo {
namespace {

constexpr double kFullScale = 32768;
constexpr double kQuietestDb = -60;

std::size_t pixels(std::int32_t length) { return static_cast<std::size_t>(length); }

template <class Number>
void count(std::atomic<Number>& counter, Number number) {
  counter.fetch_add(number, std::memory_order_relaxed);
}

}  // namespace

std::size_t sizeOf(const LMRTCVideoFrame& frame) {
  return pixels(frame.width) * pixels(frame.height) +
         2 * (pixels(frame.width + 1) / 2) * (pixels(frame.height + 1) / 2);
}

std::size_t sizeOf(const AudioBlock& block) { return sizeof block.samples; }

MediaMeter::Reading MediaMeter::Reading::since(const Reading& earlier) const {
  Reading difference = *this;
  difference.pictures -= earlier.pictures;
  difference.blocks -= earlier.blocks;
  difference.lost -= earlier.lost;
  difference.bytes -= earlier.bytes;
  difference.heardBlocks -= earlier.heardBlocks;
  difference.energy -= earlier.energy;
  return difference;
}

std::int64_t MediaMeter::Reading::audioLevel() const {
  if (heardBlocks == 0 || energy == 0) return 0;
  const double meanSquare = static_cast<double>(energy) / static_cast<double>(heardBlocks);
  const double decibels = 10 * std::log10(meanSquare / (kFullScale * kFullScale));
  return std::clamp<std::int64_t>(std::llround(100 * (1 - decibels / kQuietestDb)), 0, 100);
}

float MediaMeter::Reading::packetLoss() const {
  const std::int64_t all = pictures + blocks + lost;
  return all == 0 ? 0 : static_cast<float>(lost) / static_cast<float>(all);
}

void MediaMeter::add(const LMRTCVideoFrame& frame) {
  count(pictures_, std::int64_t{1});
  count(bytes_, static_cast<std::int64_t>(sizeOf(frame)));
  width_.store(frame.width, std::memory_order_relaxed);
  height_.store(frame.height, std::memory_order_relaxed);
}

void MediaMeter::add(const AudioBlock& block) {
  count(blocks_, std::int64_t{1});
  count(bytes_, static_cast<std::int64_t>(sizeOf(block)));
  hear(block);
}

void MediaMeter::hear(const AudioBlock& block) {
  std::int64_t sum = 0;
  for (const std::int32_t sample : block.samples) sum += sample * sample;
  count(energy_, sum / static_cast<std::int64_t>(block.samples.size()));
  count(heardBlocks_, std::int64_t{1});
}

MediaMeter::Reading MediaMeter::read() const {
  Reading reading;
  reading.pictures = pictures_.load(std::memory_order_relaxed);
  reading.blocks = blocks_.load(std::memory_order_relaxed);
  reading.lost = lost_.load(std::memory_order_relaxed);
  reading.bytes = bytes_.load(std::memory_order_relaxed);
  reading.heardBlocks = heardBlocks_.load(std::memory_order_relaxed);
  reading.energy = energy_.load(std::memory_order_relaxed);
  reading.width = width_.load(std::memory_order_relaxed);
  reading.height = height_.load(std::memory_order_relaxed);
  return reading;
}

}  // namespace lumo
