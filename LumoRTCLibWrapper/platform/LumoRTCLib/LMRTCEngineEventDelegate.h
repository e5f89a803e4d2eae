#pragma once

#include <cstdint>
#include <string>

/// Hears of the events of the SDK engine, on the SDK's thread.
class LMRTCEngineEventDelegate {
 public:
  virtual ~LMRTCEngineEventDelegate() = default;

  /// The server has removed the local user from a room.
  /// @param reason  the server's number for why
  virtual void didKicked(const std::string& roomId, std::int64_t reason) = 0;
};
