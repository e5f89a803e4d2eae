#include "LumoRTCLocal/sdk/NetworkProbe.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <vector>

#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

constexpr Microseconds kSpacing = Microseconds(std::chrono::seconds(1)) / NetworkProbe::kPacketsPerSecond;

constexpr std::int64_t kUp = 1;  // as the forms name the directions
constexpr std::int64_t kDown = 2;

/// The most that each level but the last allows.
struct QualityBound {
  Microseconds roundTrip;
  double loss;
};

constexpr QualityBound kQualityBounds[] = {
    {std::chrono::milliseconds(100), 0.01},
    {std::chrono::milliseconds(200), 0.03},
    {std::chrono::milliseconds(400), 0.08},
    {std::chrono::milliseconds(800), 0.20},
};

std::int64_t qualityLevel(Microseconds roundTrip, double loss) {
  const auto* const level = std::ranges::find_if(kQualityBounds, [&](const QualityBound& bound) {
    return roundTrip <= bound.roundTrip && loss <= bound.loss;
  });
  return 1 + (level - std::begin(kQualityBounds));
}

}  // namespace

std::int64_t NetworkProbe::start() {
  if (std::exchange(running_, true)) return LocalCodeProbeRunning;
  ++run_;
  up_ = down_ = {};
  returned_ = 0;
  roundTrips_ = Microseconds(0);
  step(0);
  return LocalCodeSuccess;
}

std::int64_t NetworkProbe::interrupt() {
  if (!std::exchange(running_, false)) return LocalCodeProbeNotRunning;
  if (const auto delegate = delegate_.get()) delegate->didRTCProbeInterrput(LocalCodeProbeInterrupted);
  return LocalCodeSuccess;
}

/// @param packet  its number; one second after another is told, and the last one ends it
void NetworkProbe::step(std::int64_t packet) {
  if (packet > 0 && packet % kPacketsPerSecond == 0) report();
  if (!running_) return;  // the delegate has ended it
  if (packet == kSeconds * kPacketsPerSecond) {
    running_ = false;
    if (const auto delegate = delegate_.get()) delegate->didRTCProbeComplete();
    return;
  }
  sendUp();
  at(context_->timeline->now() + kSpacing, [packet](NetworkProbe& self) { self.step(packet + 1); });
}

void NetworkProbe::sendUp() {
  const Microseconds start = context_->timeline->now();
  ++up_.sent;
  const auto arrival = context_->connection->up.carry(kPacketBytes, start);
  if (!arrival) {
    ++up_.lost;
    return;
  }
  at(*arrival, [start](NetworkProbe& self) { self.sendBack(start); });
}

void NetworkProbe::sendBack(Microseconds start) {
  ++down_.sent;
  const auto arrival = context_->connection->down.carry(kPacketBytes, context_->timeline->now());
  if (!arrival) {
    ++down_.lost;
    return;
  }
  at(*arrival, [start](NetworkProbe& self) {
    ++self.returned_;
    self.roundTrips_ += self.context_->timeline->now() - start;
  });
}

void NetworkProbe::report() {
  const std::vector<LMRTCProbeForm> forms{makeForm(kUp, up_), makeForm(kDown, down_)};
  up_ = down_ = {};
  returned_ = 0;
  roundTrips_ = Microseconds(0);
  if (const auto delegate = delegate_.get()) delegate->didReportProbeForms(forms);
}

LMRTCProbeForm NetworkProbe::makeForm(std::int64_t direction, const Direction& link) const {
  const double loss = link.sent > 0 ? static_cast<double>(link.lost) / static_cast<double>(link.sent) : 0;
  const Microseconds roundTrip = returned_ > 0 ? roundTrips_ / returned_ : Microseconds(0);
  LMRTCProbeForm form;
  form.direction = direction;
  form.stat.rtt = std::chrono::round<std::chrono::milliseconds>(roundTrip).count();
  form.stat.packetLoss = static_cast<float>(loss);
  // Before anything has come back, only loss tells something.
  if (returned_ > 0 || link.lost > 0) form.qualityLevel = qualityLevel(roundTrip, loss);
  return form;
}

template <class Work>
void NetworkProbe::at(Microseconds time, Work work) {
  context_->sdk->postAt(time, [weak = weak_from_this(), run = run_, work] {
    const auto self = weak.lock();
    if (self && self->running_ && run == self->run_) work(*self);
  });
}

}  // namespace lumo
