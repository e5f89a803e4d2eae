#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

class LMRTCInputStream;

/// Another member of a room. Every operation may be called on any thread.
class LMRTCRemoteUser {
 public:
  virtual ~LMRTCRemoteUser() = default;

  /// Absent for a member that the server has not named.
  virtual std::optional<std::string> userId() const = 0;

  /// What the user publishes at the moment, in the order of publication.
  virtual std::vector<std::shared_ptr<LMRTCInputStream>> remoteStreams() const = 0;
};
