#pragma once

#include <cstdint>
#include <string>

/// How a video stream of the local user did since the last report.
struct LMRTCIWLocalVideoStats {
  bool tiny = false;           ///< whether it is the small stream
  std::uint64_t codec = 0;     ///< 0: H.264
  std::int64_t bitrate = 0;    ///< kilobits per second, rounded
  std::int64_t fps = 0;        ///< frames per second
  std::int64_t width = 0;      ///< pixels
  std::int64_t height = 0;     ///< pixels
  double packageLostRate = 0;  ///< fraction of the packets that were lost, in hundredths
  std::int64_t rtt = 0;        ///< round trip, milliseconds

  /// The fields as text, for logs.
  std::string description() const;
};
