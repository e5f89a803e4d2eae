#include "LumoRTCLocal/sdk/Speaker.h"

#include <utility>

namespace lumo {

void Speaker::setSink(Sink sink) {
  sink_.set(sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr);
}

void Speaker::audioTick(Microseconds time) {
  mix_.write(block_);
  mix_.clear();
  receivedTap_.deliver(block_, time);
  if (!enabled_.load(std::memory_order_relaxed)) return;
  if (const auto sink = sink_.get()) (*sink)(block_, time);
}

}  // namespace lumo
