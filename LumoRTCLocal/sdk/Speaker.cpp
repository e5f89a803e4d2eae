#include "LumoRTCLocal/sdk/Speaker.h"

#include <utility>

namespace lumo {

void Speaker::setSink(Sink sink) {
  sink_.set(sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr);
}

void Speaker::addLocal(const AudioMix& mix) {
  if (!std::exchange(hasLocal_, true)) local_.clear();
  local_.add(mix);
}

void Speaker::audioTick(Microseconds time) {
  if (std::exchange(playedTime_, time) == time) return;
  mix_.write(block_);
  receivedTap_.deliver(block_, time);
  if (std::exchange(hasLocal_, false)) {
    mix_.add(local_);
    mix_.write(block_);
  }
  mix_.clear();
  if (!enabled_.load(std::memory_order_relaxed)) return;
  if (const auto output = output_.get()) output->play(block_);
  if (const auto recorder = recorder_.get()) recorder->add(block_);
  if (const auto sink = sink_.get()) (*sink)(block_, time);
}

}  // namespace lumo
