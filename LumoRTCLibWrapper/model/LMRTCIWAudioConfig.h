#pragma once

#include <cstdint>
#include <string>

/// How the microphone is captured.
struct LMRTCIWAudioConfig {
  std::int64_t quality = 0;             ///< 0 to 2; any other number acts as 0
  std::int64_t scenario = 0;            ///< 0 to 2; any other number acts as 0
  std::uint64_t recordingVolume = 100;  ///< percent of the captured level; not range-checked

  /// JSON text with "AudioQuality", "AudioScenario" and "recordingVolume".
  std::string description() const;
};
