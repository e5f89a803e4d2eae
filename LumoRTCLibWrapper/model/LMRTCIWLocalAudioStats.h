#pragma once

#include <cstdint>
#include <string>

/// How an audio stream of the local user did since the last report.
struct LMRTCIWLocalAudioStats {
  std::int64_t codec = 0;      ///< 111 for Opus, 0 for PCMU and all others
  std::int64_t bitrate = 0;    ///< kilobits per second, rounded
  std::int64_t volume = 0;     ///< 0 to 100
  double packageLostRate = 0;  ///< fraction of the packets that were lost, in hundredths
  std::int64_t rtt = 0;        ///< round trip, milliseconds

  /// The fields as text, for logs.
  std::string description() const;
};
