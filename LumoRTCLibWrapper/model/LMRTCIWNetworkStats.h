#pragma once

#include <cstdint>
#include <string>

/// How the network did since the last report.
struct LMRTCIWNetworkStats {
  std::int64_t type = 0;            ///< 1 wireless network, 2 mobile network, 0 any other
  std::string ip;                   ///< the local address; "Unknown" when it is not known
  std::int64_t sendBitrate = 0;     ///< kilobits per second, truncated
  std::int64_t receiveBitrate = 0;  ///< kilobits per second, truncated
  std::int64_t rtt = 0;             ///< round trip, milliseconds

  /// The fields as text, for logs.
  std::string description() const;
};
