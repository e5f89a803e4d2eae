#pragma once

#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

namespace lumo {

/// What the log shows of an absent video config.
inline const LMRTCIWVideoConfig kNoVideoConfig{
    .minBitrate = 0, .maxBitrate = 0, .fps = 0, .resolution = 0, .mirror = false};

/// The SDK's record for a host's; mirroring is no part of it.
inline LMRTCVideoStreamConfig sdkVideoConfig(const LMRTCIWVideoConfig& config) {
  LMRTCVideoStreamConfig sdkConfig;
  sdkConfig.setMinBitrate(config.minBitrate);
  sdkConfig.setMaxBitrate(config.maxBitrate);
  sdkConfig.setVideoFps(LMRTCIWConverter::toLMRTCVideoFPS(config.fps));
  sdkConfig.setVideoSizePreset(LMRTCIWConverter::toLMRTCVideoSizePreset(config.resolution));
  return sdkConfig;
}

}  // namespace lumo
