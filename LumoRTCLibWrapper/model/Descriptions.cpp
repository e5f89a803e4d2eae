#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWAudioSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoSetup.h"
#include "LumoRTCLibWrapper/util/LMIWJson.h"

using lumo::JsonObject;

std::string LMRTCIWAudioSetup::description() const {
  return JsonObject().add("type", type).add("mixOtherAppsAudio", mixOtherAppsAudio).text();
}

std::string LMRTCIWVideoSetup::description() const {
  return JsonObject().add("enableTinyStream", enableTinyStream).text();
}

std::string LMRTCIWEngineSetup::description() const {
  return JsonObject()
      .add("reconnectable", reconnectable)
      .add("statsReportInterval", statsReportInterval)
      .add("enableSRTP", enableSRTP)
      .add("audioSetup", audioSetup ? audioSetup->description() : std::string())
      .add("videoSetup", videoSetup ? videoSetup->description() : std::string())
      .text();
}

std::string LMRTCIWRoomSetup::description() const {
  return JsonObject().add("mediaType", mediaType).add("role", role).add("joinType", joinType).text();
}

std::string LMRTCIWAudioConfig::description() const {
  return JsonObject()
      .add("AudioQuality", quality)
      .add("AudioScenario", scenario)
      .add("recordingVolume", recordingVolume)
      .text();
}

std::string LMRTCIWVideoConfig::description() const {
  return JsonObject()
      .add("minBitrate", minBitrate)
      .add("maxBitrate", maxBitrate)
      .add("fps", fps)
      .add("resolution", resolution)
      .text();
}
