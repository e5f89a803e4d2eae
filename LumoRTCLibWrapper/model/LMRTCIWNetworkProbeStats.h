#pragma once

#include <cstdint>
#include <string>

/// What the network probe measured in one direction.
struct LMRTCIWNetworkProbeStats {
  std::int64_t qualityLevel = 0;  ///< LMRTCIWNetworkQualityLevel
  std::int64_t rtt = 0;           ///< round trip, milliseconds
  float packetLostRate = 0;       ///< fraction of the packets that were lost, 0 to 1

  /// Level and round trip, for logs.
  std::string description() const;
};
