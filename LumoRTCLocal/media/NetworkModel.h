#pragma once

#include <cstdint>

#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// How one direction of a connection behaves. The default is perfect: nothing is late, nothing is lost.
/// Values out of range count as the nearest one in range.
struct NetworkModel {
  Microseconds delay{0};       ///< of every packet, up to a minute
  Microseconds jitter{0};      ///< up to that much more, evenly spread; packets do not overtake
  double loss = 0;             ///< the share of packets that are lost, 0 to 1
  std::int64_t bandwidth = 0;  ///< bits per second; 0: unlimited

  bool operator==(const NetworkModel&) const = default;
};

}  // namespace lumo
