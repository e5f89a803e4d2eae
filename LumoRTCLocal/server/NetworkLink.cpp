#include "LumoRTCLocal/server/NetworkLink.h"

#include <algorithm>

namespace lumo {
namespace {

constexpr std::int64_t kBitsPerByte = 8;
constexpr std::int64_t kSecond = Microseconds(std::chrono::seconds(1)).count();

constexpr Microseconds kLongestDelay = std::chrono::minutes(1);

/// How long the last packets of a former model may take from their arrival to where they are delivered.
constexpr Microseconds kSettling{100000};

}  // namespace

void NetworkLink::setModel(const NetworkModel& model) {
  const std::lock_guard lock(mutex_);
  const NetworkModel former = model_;
  model_.delay = std::clamp(model.delay, Microseconds(0), kLongestDelay);
  model_.jitter = std::clamp(model.jitter, Microseconds(0), kLongestDelay);
  model_.loss = std::clamp(model.loss, 0.0, 1.0);
  model_.bandwidth = std::max<std::int64_t>(model.bandwidth, 0);
  if (model_ == former) return;
  busyUntil_ = Microseconds(0);
  lastArrival_ = lastOrdered_;
  if (model_ != NetworkModel()) direct_.store(false, std::memory_order_relaxed);
}

Microseconds NetworkLink::expectedTransit() const {
  const std::lock_guard lock(mutex_);
  return model_.delay + model_.jitter / 2;
}

std::optional<Microseconds> NetworkLink::carry(std::size_t bytes, Microseconds now) {
  const std::lock_guard lock(mutex_);
  if (model_ == NetworkModel() && now > lateUntil_ + kSettling) {
    direct_.store(true, std::memory_order_relaxed);
    return now;
  }
  ++count_.packets;
  if (isLost(now)) {
    ++count_.lost;
    return std::nullopt;
  }
  Microseconds leaving{0};
  if (model_.bandwidth > 0)
    leaving = Microseconds(static_cast<std::int64_t>(bytes) * kBitsPerByte * kSecond / model_.bandwidth);
  busyUntil_ = std::max(busyUntil_, now) + leaving;
  const Microseconds late(
      static_cast<std::int64_t>(nextChance() * static_cast<double>(model_.jitter.count())));
  lastArrival_ = std::max(lastArrival_, busyUntil_ + model_.delay + late);
  if (leaving <= kLongestWait) lastOrdered_ = lastArrival_;
  if (lastArrival_ > now) lateUntil_ = lastArrival_;
  count_.transit += lastArrival_ - now;
  return lastArrival_;
}

NetworkLink::Count NetworkLink::count() const {
  const std::lock_guard lock(mutex_);
  return count_;
}

bool NetworkLink::isLost(Microseconds now) {
  return nextChance() < model_.loss || (model_.bandwidth > 0 && busyUntil_ > now + kLongestWait);
}

/// The next of a repeatable row of numbers that look random, from 0 to below 1 (splitmix64).
double NetworkLink::nextChance() {
  chance_ += 0x9e3779b97f4a7c15;
  std::uint64_t mixed = chance_;
  mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
  mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
  mixed ^= mixed >> 31;
  return static_cast<double>(mixed >> 11) * 0x1.0p-53;
}

}  // namespace lumo
