#pragma once

#include <cstdint>

/// What the SDK engine is initialised with.
class LMRTCConfig {
 public:
  /// Whether the SDK reconnects by itself after the connection was lost.
  void setIsEnableAutoReconnect(bool enabled) { autoReconnect_ = enabled; }
  bool isEnableAutoReconnect() const { return autoReconnect_; }

  /// Whether media is encrypted on its way (Secure Real-time Transport Protocol).
  void setEnableSRTP(bool enabled) { srtp_ = enabled; }
  bool enableSRTP() const { return srtp_; }

  /// Seconds between two status reports.
  void setStatusReportInterval(std::int64_t seconds) { statusReportInterval_ = seconds; }
  std::int64_t statusReportInterval() const { return statusReportInterval_; }

  /// Whether the sound of other applications keeps playing during a call.
  void setEnableMixWithOthers(bool enabled) { mixWithOthers_ = enabled; }
  bool enableMixWithOthers() const { return mixWithOthers_; }

  /// The SDK's switch for calls between different SDK versions.
  void setEnableVersionMismatch(bool enabled) { versionMismatch_ = enabled; }
  bool enableVersionMismatch() const { return versionMismatch_; }

 private:
  bool autoReconnect_ = false;
  bool srtp_ = false;
  std::int64_t statusReportInterval_ = 0;
  bool mixWithOthers_ = false;
  bool versionMismatch_ = false;
};
