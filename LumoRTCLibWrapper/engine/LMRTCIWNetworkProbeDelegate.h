#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "LumoRTCLibWrapper/model/LMRTCIWNetworkProbeStats.h"

/// Receives the results of a network probe, on the SDK's thread. Every field is optional. The engine holds
/// the listener weakly. Fill it before installing it and replace it as a whole.
struct LMRTCIWNetworkProbeDelegate {
  std::function<void(const LMRTCIWNetworkProbeStats& stats)> onNetworkProbeUpLinkStats;
  std::function<void(const LMRTCIWNetworkProbeStats& stats)> onNetworkProbeDownLinkStats;
  /// The probe has ended: with code 0 and "success", or with the SDK's code and text.
  std::function<void(std::int64_t code, const std::string& errMsg)> onNetworkProbeFinished;
};
