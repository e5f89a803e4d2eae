#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>

#include "LumoRTCLocal/media/NetworkModel.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// One direction of one member's connection to the media server. Packets leave in the order in which they
/// enter; what would have to wait for the bandwidth for more than kLongestWait is lost. Any thread.
class NetworkLink {
 public:
  static constexpr Microseconds kLongestWait{500000};

  /// The packets that have entered so far, while the link was not direct.
  struct Count {
    std::int64_t packets = 0;  ///< lost ones included
    std::int64_t lost = 0;
    Microseconds transit{0};  ///< of all that were not lost, together
  };

  /// @param seed  of chance: links of the same seed and model lose the same packets
  explicit NetworkLink(std::uint64_t seed) : chance_(seed) {}

  /// For the packets that enter from now on. They stay behind those of the former model, but for one that
  /// needs more than kLongestWait to leave: that one they overtake.
  void setModel(const NetworkModel& model);
  /// The mean transit that the model gives a small packet.
  Microseconds expectedTransit() const;

  /// Whether packets need not be carried at all: the model is perfect, and those of an earlier one have
  /// arrived.
  bool isDirect() const { return direct_.load(std::memory_order_relaxed); }

  /// @param now  on the timeline
  /// @return when a packet that enters now arrives; nothing when it is lost
  std::optional<Microseconds> carry(std::size_t bytes, Microseconds now);

  Count count() const;

 private:
  double nextChance();
  bool isLost(Microseconds now);

  std::atomic<bool> direct_{true};
  mutable std::mutex mutex_;  ///< guards what follows
  NetworkModel model_;
  std::uint64_t chance_;
  Microseconds busyUntil_{0};  ///< when the last packet has left the bottleneck
  Microseconds lastArrival_{0};
  Microseconds lastOrdered_{0};  ///< of the packets that those of another model must not overtake
  Microseconds lateUntil_{0};    ///< the last arrival that came after its packet had entered
  Count count_;
};

}  // namespace lumo
