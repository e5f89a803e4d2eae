#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWAudioSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWLocalAudioStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWLocalVideoStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWNetworkProbeStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWNetworkStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRemoteAudioStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRemoteVideoStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoSetup.h"
#include "LumoRTCLibWrapper/util/LMIWJson.h"
#include "LumoRTCLibWrapper/util/LMIWMapText.h"

using lumo::JsonObject;
using lumo::MapText;

namespace {

/// The fields that the statistics of local and remote pictures share.
template <class Stats>
MapText& addVideo(MapText& map, const Stats& stats) {
  return map.add("codec", stats.codec)
      .add("bitrate", stats.bitrate)
      .add("fps", stats.fps)
      .add("width", stats.width)
      .add("height", stats.height)
      .add("packageLostRate", stats.packageLostRate)
      .add("rtt", stats.rtt);
}

template <class Stats>
std::string audioText(const Stats& stats) {
  return MapText()
      .add("codec", stats.codec)
      .add("bitrate", stats.bitrate)
      .add("volume", stats.volume)
      .add("packageLostRate", stats.packageLostRate)
      .add("rtt", stats.rtt)
      .text();
}

}  // namespace

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

std::string LMRTCIWCustomLayout::description() const {
  return JsonObject()
      .add("type", type_)
      .add("userId", userId_)
      .add("tag", tag_.value_or("null"))
      .add("x", x)
      .add("y", y)
      .add("width", width)
      .add("height", height)
      .text();
}

std::string LMRTCIWLocalVideoStats::description() const {
  MapText map;
  map.add("tiny", tiny);
  return addVideo(map, *this).text();
}

std::string LMRTCIWLocalAudioStats::description() const { return audioText(*this); }

std::string LMRTCIWRemoteVideoStats::description() const {
  MapText map;
  return addVideo(map, *this).text();
}

std::string LMRTCIWRemoteAudioStats::description() const { return audioText(*this); }

std::string LMRTCIWNetworkStats::description() const {
  return MapText()
      .add("type", type)
      .add("ip", ip)
      .add("sendBitrate", sendBitrate)
      .add("receiveBitrate", receiveBitrate)
      .add("rtt", rtt)
      .text();
}

std::string LMRTCIWNetworkProbeStats::description() const {
  return lumo::format("qualityLevel:%ld, rtt:%ld", {qualityLevel, rtt});
}
