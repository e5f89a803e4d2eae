#pragma once

#include <cstdint>

/// Converts the enumerations of the host API to those of the SDK, and some back. Pure functions of any
/// integer: what is out of range, negative numbers included, takes the fallback that each line names.
class LMRTCIWConverter {
 public:
  /// Host to SDK: 1 stays 1. Fallback 0.
  static std::int64_t toLMRTCJoinRoomType(std::int64_t type);
  /// SDK to host: 1 to 5 stay. Fallback 0.
  static std::int64_t toLMRTCIWNetworkQualityLevel(std::int64_t level);
  /// Host to SDK and back: 0 stays, 1 and 2 change places, 3 and 4 change places. Fallback -1.
  static std::int64_t toStreamType(std::int64_t type);
  /// SDK to host: the same table as `toStreamType`, which is its own inverse. Fallback -1.
  static std::int64_t toLMRTCIWStreamType(std::int64_t type);
  /// SDK to host: 0 to 3 stay. Fallback 1, unlike the way back.
  static std::int64_t toLMRTCIWVideoFps(std::int64_t fps);
  /// Host to SDK: 0 to 3 stay. Fallback -1.
  static std::int64_t toLMRTCVideoFPS(std::int64_t fps);
  /// Host to SDK: 0 to 16 stay. Fallback -1.
  static std::int64_t toLMRTCVideoSizePreset(std::int64_t preset);
  /// Host to SDK: 1 to 3 stay. Fallback 2.
  static std::int64_t toLMRTCMixLayoutMode(std::int64_t mode);
  /// Host to SDK: 2 stays 2. Fallback 1.
  static std::int64_t toLMRTCVideoRenderMode(std::int64_t mode);
  /// Host to SDK: 0 to 2 stay. Fallback 1.
  static std::int64_t toLMRTCMixerMode(std::int64_t mode);
  /// Host to SDK: 0 (front) becomes 2, 1 (back) stays 1. Fallback 0.
  static std::int64_t toLMRTCDeviceCamera(std::int64_t camera);
  /// Host to SDK: 0 to 2 stay. Fallback 0.
  static std::int64_t toLMRTCAudioQuality(std::int64_t quality);
  /// Host to SDK: 0 to 2 stay. Fallback 0.
  static std::int64_t toLMRTCAudioScenario(std::int64_t scenario);
  /// Host to SDK, numbered by RTP payload type: 0 stays 0. Fallback 111.
  static std::int64_t toLMRTCAudioCodecType(std::int64_t codec);
};
