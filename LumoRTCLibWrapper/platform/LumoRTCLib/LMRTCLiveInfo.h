#pragma once

#include <cstdint>
#include <functional>
#include <string>

class LMRTCMixConfig;

/// The control handle of a live publication: whoever holds it may steer the live mix of its room. Operations
/// may be called on any thread; each completion is called once, later, on the SDK's thread.
class LMRTCLiveInfo {
 public:
  using Completion = std::function<void(std::int64_t code)>;
  using SwitchCompletion = std::function<void(bool success, std::int64_t code)>;

  virtual ~LMRTCLiveInfo() = default;

  /// Changes the live mix in what `config` sets; everything else stays as it is.
  virtual void setMixConfig(const LMRTCMixConfig& config, Completion completion) = 0;

  /// Starts and ends pushing the live mix to an address outside.
  virtual void addPublishStreamUrl(const std::string& url, Completion completion) = 0;
  virtual void removePublishStreamUrl(const std::string& url, Completion completion) = 0;

  /// Switches the inner CDN stream of the room on or off.
  virtual void enableInnerCDN(bool enabled, SwitchCompletion completion) = 0;
};
