#pragma once

/// The control handle of a live publication: whoever holds it may steer the live mix of its room.
class LMRTCLiveInfo {
 public:
  virtual ~LMRTCLiveInfo() = default;
};
