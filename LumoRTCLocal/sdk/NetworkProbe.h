#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProbeTest.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/sdk/LocalContext.h"

namespace lumo {

/// Sends small packets over the local user's connection to the media server and back, for kSeconds, and tells
/// after each second how those of that second did. SDK thread, but for `setDelegate`.
class NetworkProbe : public std::enable_shared_from_this<NetworkProbe> {
 public:
  static constexpr std::int64_t kSeconds = 5;
  static constexpr std::int64_t kPacketsPerSecond = 50;
  static constexpr std::size_t kPacketBytes = 200;

  explicit NetworkProbe(std::shared_ptr<const LocalContext> context) : context_(std::move(context)) {}

  /// Any thread.
  void setDelegate(std::weak_ptr<LMRTCProbeTestDelegate> delegate) { delegate_.set(std::move(delegate)); }

  /// @return LocalCodeProbeRunning when it runs already
  std::int64_t start();
  /// Ends it early; the delegate is told.
  /// @return LocalCodeProbeNotRunning when there is none
  std::int64_t interrupt();

 private:
  /// What became of the packets of one direction since the last report.
  struct Direction {
    std::int64_t sent = 0;
    std::int64_t lost = 0;
  };

  void step(std::int64_t packet);
  void sendUp();
  void sendBack(Microseconds start);
  void report();
  LMRTCProbeForm makeForm(std::int64_t direction, const Direction& link) const;
  /// Runs `work` at `time`, if this probe still runs then.
  template <class Work>
  void at(Microseconds time, Work work);

  const std::shared_ptr<const LocalContext> context_;
  WeakCell<LMRTCProbeTestDelegate> delegate_;

  // SDK thread only.
  bool running_ = false;
  std::uint64_t run_ = 0;
  Direction up_;
  Direction down_;
  std::int64_t returned_ = 0;
  Microseconds roundTrips_{0};  ///< of those that returned, together
};

}  // namespace lumo
