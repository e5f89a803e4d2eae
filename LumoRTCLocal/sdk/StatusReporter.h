#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStatusReport.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/server/MediaMeter.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

class LocalRoom;

/// Reports at an interval, on the SDK's thread, how the streams of the joined rooms do: what was carried
/// since the last report, as raw pictures and samples.
class StatusReporter : public std::enable_shared_from_this<StatusReporter> {
 public:
  explicit StatusReporter(std::shared_ptr<const LocalContext> context) : context_(std::move(context)) {}

  /// Begins a new interval; there are no reports without a delegate. Any thread.
  void setDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate);
  /// For what begins from now on. Any thread.
  /// @param seconds  below 1 there are no reports; more than a day counts as a day
  void setInterval(std::int64_t seconds) {
    constexpr std::int64_t kDay = 24 * 60 * 60;
    interval_ = std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, kDay));
  }

  /// Reports about `room` for as long as it is open. SDK thread.
  void start(const std::shared_ptr<LocalRoom>& room);

 private:
  /// What was read of a meter at the last report, and what had come since the one before.
  struct Lap {
    MediaMeter::Reading last;
    MediaMeter::Reading gain;
    std::uint64_t report = 0;
  };

  void begin();
  void schedule(Microseconds interval, Microseconds time);
  void report(LocalRoom& room, LMRTCStatusReportDelegate& delegate);
  LMRTCStatusForm makeForm(LocalRoom& room);
  void addSent(LMRTCStatusForm& form, const std::shared_ptr<Publication>& publication);
  LMRTCStreamStatus makeStatus(const StreamName& name, const MediaMeter::Reading& gain) const;
  void reportLiveAudio(const LocalRoom& room, LMRTCStatusReportDelegate& delegate);
  const MediaMeter::Reading& gainOf(const std::shared_ptr<const MediaMeter>& meter);
  double perSecond(std::int64_t number) const;

  const std::shared_ptr<const LocalContext> context_;
  WeakCell<LMRTCStatusReportDelegate> delegate_;
  std::atomic<Microseconds> interval_{Microseconds(0)};

  // SDK thread only.
  std::weak_ptr<LocalRoom> room_;
  std::uint64_t run_ = 0;  ///< counts the beginnings; a report that belongs to an earlier one is not made
  std::uint64_t reports_ = 0;
  Microseconds lastTime_{0};
  Microseconds span_{0};  ///< that the present report covers
  std::int64_t roundTrip_ = 0;
  NetworkLink::Count lastUp_;
  NetworkLink::Count lastDown_;
  std::map<std::weak_ptr<const MediaMeter>, Lap, std::owner_less<>> laps_;
};

}  // namespace lumo
