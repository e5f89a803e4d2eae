#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/server/MediaServer.h"

namespace lumo {

/// Steers the live mix of a room on behalf of one member, for as long as that is a broadcaster. Any thread.
class LocalLiveInfo : public LMRTCLiveInfo {
 public:
  LocalLiveInfo(std::shared_ptr<const LocalContext> context, MediaServer::Member member);

  void setMixConfig(const LMRTCMixConfig& config, Completion completion) override;
  /// Completes when the address is open, or has failed to open.
  void addPublishStreamUrl(const std::string& url, Completion completion) override;
  /// Completes when everything has been sent and the address is closed.
  void removePublishStreamUrl(const std::string& url, Completion completion) override;
  /// Completes when the room shows the stream, or no longer.
  void enableInnerCDN(bool enabled, SwitchCompletion completion) override;

 private:
  using Push = std::int64_t (MediaServer::*)(const MediaServer::Member& member, const std::string& address,
                                             MixPushes::Completion completion);

  void changePushes(std::string_view operation, Push push, const std::string& url, Completion completion);

  const std::shared_ptr<const LocalContext> context_;
  const MediaServer::Member member_;
};

}  // namespace lumo
