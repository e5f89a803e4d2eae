#pragma once

#include <cstdint>
#include <string>

/// The audio part of an engine setup.
struct LMRTCIWAudioSetup {
  std::int64_t type = 111;        ///< audio codec by RTP payload type: 0 or 111; any other number acts as 111
  bool mixOtherAppsAudio = true;  ///< whether the sound of other applications keeps playing during a call

  /// JSON text with "type" and "mixOtherAppsAudio".
  std::string description() const;
};
