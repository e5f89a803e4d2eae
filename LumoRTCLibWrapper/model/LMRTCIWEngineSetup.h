#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/model/LMRTCIWAudioSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoSetup.h"

/// What an engine is created with. The engine and the host share the record; the SDK reads it once, at
/// creation, the audio and video setups again at each publication.
struct LMRTCIWEngineSetup {
  std::string mediaUrl;                  ///< address of the media server; empty: the SDK's own
  bool reconnectable = false;            ///< whether the SDK reconnects by itself
  std::int64_t statsReportInterval = 1;  ///< seconds between two status reports
  bool enableSRTP = false;               ///< whether media is encrypted on its way
  std::shared_ptr<LMRTCIWAudioSetup> audioSetup = std::make_shared<LMRTCIWAudioSetup>();
  std::shared_ptr<LMRTCIWVideoSetup> videoSetup = std::make_shared<LMRTCIWVideoSetup>();
  bool enableVersionMatch = false;  ///< the SDK's switch for calls between different SDK versions

  /// JSON text with "reconnectable", "statsReportInterval", "enableSRTP", "audioSetup" and "videoSetup"; the
  /// nested setups are their own descriptions inside a string value.
  std::string description() const;
};
