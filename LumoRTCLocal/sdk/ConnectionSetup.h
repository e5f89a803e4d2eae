#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/Network.h"

namespace lumo {

/// How long it takes a join to reach the media server: three round trips of the connection, of which two are
/// spared when they were made ahead. On a perfect connection that is no time at all. Any thread.
class ConnectionSetup {
 public:
  /// How long a connection that was made ahead waits for the join.
  static constexpr Microseconds kValidity = std::chrono::seconds(30);

  explicit ConnectionSetup(std::shared_ptr<const NetworkConnection> connection)
      : connection_(std::move(connection)) {}

  /// Begins to connect, for the next join.
  void connectAhead(Microseconds now) { ahead_.set(Ahead{now + 2 * roundTrip(), now + kValidity}); }
  void disconnect() { ahead_.set({}); }

  /// How much longer a join that begins now takes to reach the server.
  Microseconds takeForJoin(Microseconds now) {
    const auto ahead = ahead_.exchange({});
    if (!ahead || now > ahead->validUntil) return 3 * roundTrip();
    return std::max(ahead->ready - now, Microseconds(0)) + roundTrip();
  }

 private:
  struct Ahead {
    Microseconds ready{0};
    Microseconds validUntil{0};
  };

  Microseconds roundTrip() const {
    return connection_->up.expectedTransit() + connection_->down.expectedTransit();
  }

  const std::shared_ptr<const NetworkConnection> connection_;
  Cell<std::optional<Ahead>> ahead_;
};

}  // namespace lumo
