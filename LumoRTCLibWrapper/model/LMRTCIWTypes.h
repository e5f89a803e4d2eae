#pragma once

#include <cstdint>

// The host's numbers. Operations and records take plain integers, so that a host may pass any number; what
// happens to numbers without a name here is documented where they are used.

/// What an operation on streams concerns.
enum LMRTCIWMediaType : std::int64_t {
  LMRTCIWMediaTypeAudio = 0,
  LMRTCIWMediaTypeVideo = 1,
  LMRTCIWMediaTypeAudioVideo = 2,
};

/// The part that the local user plays in a room.
enum LMRTCIWRole : std::int64_t {
  LMRTCIWRoleMeetingMember = 0,
  LMRTCIWRoleLiveBroadcaster = 1,
  LMRTCIWRoleLiveAudience = 2,
};

/// Whose stream a stream is.
enum LMRTCIWStreamType : std::int64_t {
  LMRTCIWStreamTypeNormal = 0,  ///< microphone or camera
  LMRTCIWStreamTypeLive = 1,    ///< the live mix
  LMRTCIWStreamTypeCustom = 2,  ///< an extra stream, told apart by its tag
};

/// The cameras of a device.
enum LMRTCIWCamera : std::int64_t {
  LMRTCIWCameraNone = -1,
  LMRTCIWCameraFront = 0,
  LMRTCIWCameraBack = 1,
};

/// Frame-rate values.
enum LMRTCIWVideoFps : std::int64_t {
  LMRTCIWVideoFps10 = 0,
  LMRTCIWVideoFps15 = 1,
  LMRTCIWVideoFps24 = 2,
  LMRTCIWVideoFps30 = 3,
};

/// How good the network is, from best to worst.
enum LMRTCIWNetworkQualityLevel : std::int64_t {
  LMRTCIWNetworkQualityLevelUnknown = 0,
  LMRTCIWNetworkQualityLevelExcellent = 1,
  LMRTCIWNetworkQualityLevelGood = 2,
  LMRTCIWNetworkQualityLevelPoor = 3,
  LMRTCIWNetworkQualityLevelBad = 4,
  LMRTCIWNetworkQualityLevelVeryBad = 5,
};

/// What LMRTCIWViewDelegate::getViewType tells.
enum LMRTCIWViewType : std::int64_t {
  LMRTCIWViewTypeNative = 0,
  LMRTCIWViewTypeFlutter = 2,
  LMRTCIWViewTypeUnity = 3,
};
