#include "LumoRTCLocal/sdk/Operations.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

constexpr std::string_view kOperations[] = {
    "joinRoom",
    "leaveRoom",
    "publishStreams",
    "unpublishStreams",
    "publishLiveStream",
    "publishDefaultLiveStreams",
    "subscribeStream",
    "unpublishLiveStream",
    "unpublishDefaultLiveStreams",
    "unsubscribeStreams",
    "requestJoinOtherRoom",
    "cancelRequestJoinOtherRoom",
    "responseJoinOtherRoom",
    "joinOtherRoom",
    "leaveOtherRoom",
    "setMixConfig",
    "addPublishStreamUrl",
    "removePublishStreamUrl",
    "enableInnerCDN",
    "setVideoConfig",
    "switchToBroadcaster",
    "switchToAudienceOnSucceed",
    "setEnableSEI",
    "startRTCProbeTest",
    "stopRTCProbeTest",
};

bool isOperation(std::string_view name) {
  return std::ranges::find(kOperations, name) != std::end(kOperations);
}

}  // namespace

Operations::Operations(std::shared_ptr<Timeline> timeline, std::shared_ptr<Runner> sdk)
    : timeline_(std::move(timeline)), sdk_(std::move(sdk)) {}

void Operations::begin() {
  const std::lock_guard lock(mutex_);
  if (std::exchange(initialised_, true)) return;
  ++sessions_;
}

bool Operations::end() {
  const std::lock_guard lock(mutex_);
  lastDue_ = Microseconds(0);
  return std::exchange(initialised_, false);
}

void Operations::abandon() {
  std::map<std::uint64_t, Call> abandoned;  // what they hold goes after the lock
  const std::lock_guard lock(mutex_);
  abandoned_ = true;
  abandoned.swap(waiting_);
}

std::uint64_t Operations::session() const {
  const std::lock_guard lock(mutex_);
  return initialised_ ? sessions_ : 0;
}

void Operations::run(std::string_view name, Work work, Microseconds travel) {
  const Microseconds arrival = timeline_->now() + travel;
  std::uint64_t number = 0;
  Microseconds due{0};
  {
    const std::lock_guard lock(mutex_);
    if (abandoned_) return;
    const Fault fault = takeLocked(name);
    due = lastDue_ = std::max(lastDue_, arrival + fault.delay);
    number = ++calls_;
    waiting_.emplace(number, Call{initialised_ ? sessions_ : 0, fault.code, std::move(work)});
  }
  sdk_->postAt(due, [weak = weak_from_this(), number] {
    if (const auto self = weak.lock()) self->perform(number);
  });
}

void Operations::perform(std::uint64_t number) {
  Call call;
  bool refused = false;
  {
    const std::lock_guard lock(mutex_);
    const auto found = waiting_.find(number);
    if (found == waiting_.end()) return;
    call = std::move(found->second);
    waiting_.erase(found);
    refused = !initialised_ || call.session != sessions_;
  }
  call.work(refused ? std::int64_t{LocalCodeNotInitialised} : call.code);
}

std::int64_t Operations::failNext(const std::string& name, std::int64_t code, std::int32_t times) {
  if (!isOperation(name)) return LocalCodeUnknownOperation;
  const std::lock_guard lock(mutex_);
  faults_[name].code = code;
  faults_[name].times = times;
  return LocalCodeSuccess;
}

std::int64_t Operations::delayNext(const std::string& name, Microseconds duration) {
  if (!isOperation(name)) return LocalCodeUnknownOperation;
  const std::lock_guard lock(mutex_);
  faults_[name].delay = duration;
  return LocalCodeSuccess;
}

Operations::Fault Operations::takeLocked(std::string_view name) {
  const auto found = faults_.find(name);
  if (found == faults_.end()) return {};
  Fault& fault = found->second;
  Fault taken{0, 0, std::exchange(fault.delay, Microseconds(0))};
  if (fault.times > 0) {
    --fault.times;
    taken.code = fault.code;
  }
  return taken;
}

}  // namespace lumo
