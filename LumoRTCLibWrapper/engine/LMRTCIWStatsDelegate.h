#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "LumoRTCLibWrapper/model/LMRTCIWLocalAudioStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWLocalVideoStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWNetworkStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRemoteAudioStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRemoteVideoStats.h"

/// Receives statistics, on the SDK's thread, at the interval of the engine setup. Every field is optional.
/// The engine holds the listener weakly. Fill it before installing it and replace it as a whole.
struct LMRTCIWStatsDelegate {
  std::function<void(const LMRTCIWNetworkStats& stats)> onNetworkStats;

  // Streams of the local user

  std::function<void(const LMRTCIWLocalAudioStats& stats)> onLocalAudioStats;
  std::function<void(const LMRTCIWLocalVideoStats& stats)> onLocalVideoStats;
  std::function<void(const LMRTCIWLocalAudioStats& stats, const std::string& tag)> onLocalCustomAudioStats;
  std::function<void(const LMRTCIWLocalVideoStats& stats, const std::string& tag)> onLocalCustomVideoStats;

  // Streams of remote users

  std::function<void(const LMRTCIWRemoteAudioStats& stats, const std::string& roomId,
                     const std::string& userId)>
      onRemoteAudioStats;
  std::function<void(const LMRTCIWRemoteVideoStats& stats, const std::string& roomId,
                     const std::string& userId)>
      onRemoteVideoStats;
  std::function<void(const LMRTCIWRemoteAudioStats& stats, const std::string& roomId,
                     const std::string& userId, const std::string& tag)>
      onRemoteCustomAudioStats;
  std::function<void(const LMRTCIWRemoteVideoStats& stats, const std::string& roomId,
                     const std::string& userId, const std::string& tag)>
      onRemoteCustomVideoStats;

  // Live mix

  std::function<void(const LMRTCIWRemoteAudioStats& stats)> onLiveMixAudioStats;
  std::function<void(const LMRTCIWRemoteVideoStats& stats)> onLiveMixVideoStats;
  /// How loud a member of the live room is, 0 to 100; silent members too.
  std::function<void(const std::string& userId, std::int64_t volume)> onLiveMixMemberAudioStats;
  std::function<void(const std::string& userId, const std::string& tag, std::int64_t volume)>
      onLiveMixMemberCustomAudioStats;
};
