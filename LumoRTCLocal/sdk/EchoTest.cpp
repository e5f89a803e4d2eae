#include "LumoRTCLocal/sdk/EchoTest.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace lumo {
namespace {

constexpr double kShortest = 1;
constexpr double kLongest = 60;

std::size_t blocksIn(double seconds) {
  const std::chrono::duration<double> length(seconds > kShortest ? std::min(seconds, kLongest) : kShortest);
  return static_cast<std::size_t>(length / AudioExchange::kBlock);
}

}  // namespace

EchoTest::EchoTest(std::shared_ptr<Speaker> speaker, double seconds)
    : speaker_(std::move(speaker)), recorded_(blocksIn(seconds)) {}

void EchoTest::take(const AudioBlock& block) {
  AudioBlock& place = recorded_[next_];
  if (isPlaying_) {
    mix_.clear();
    mix_.add(place);
    speaker_->addLocal(mix_);
  } else {
    place = block;
  }
  if (++next_ < recorded_.size()) return;
  next_ = 0;
  isPlaying_ = !isPlaying_;
}

}  // namespace lumo
