#pragma once

#include <cstdint>
#include <memory>

class LMRTCCDNInputStream;
class LMRTCVideoInputStream;
class LMRTCVideoOutputStream;

/// A surface that shows one video stream. The engine hands it the SDK stream, on the thread of the host's
/// binding call, and later asks it to let go; it never draws itself. A stream may be absent: the surface then
/// shows nothing.
class LMRTCIWViewDelegate {
 public:
  virtual ~LMRTCIWViewDelegate() = default;

  /// LMRTCIWViewType
  virtual std::int64_t getViewType() const = 0;

  /// Shows a stream of the local user.
  virtual void setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>& stream) = 0;
  virtual void removeLocalView() = 0;

  /// Shows a stream of a remote user, or the live mix.
  virtual void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>& stream) = 0;
  virtual void removeRemoteView() = 0;

  /// Shows the inner CDN stream of a live room.
  virtual void setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>& stream) = 0;
  virtual void removeInnerCdnView() = 0;
};
