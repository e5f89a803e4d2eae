#pragma once

#include <cstdint>

// The SDK's own numbers. Operations take and return plain integers, so that a value of a newer SDK passes
// through; these names serve readers and implementers.

/// What a stream carries.
enum LMRTCMediaType : std::int64_t {
  LMRTCMediaTypeAudio = 0,
  LMRTCMediaTypeVideo = 1,
};

/// Whose stream it is.
enum LMRTCMediaStreamType : std::int64_t {
  LMRTCMediaStreamTypeNormal = 0,  ///< a user's microphone or camera
  LMRTCMediaStreamTypeCustom = 1,  ///< an extra stream of a user, told apart by its tag
  LMRTCMediaStreamTypeLive = 2,    ///< the live mix of a live room
  LMRTCMediaStreamTypeCdn = 3,     ///< the inner CDN stream of a live room
};

/// Whether a stream is switched on at its source.
enum LMRTCResourceState : std::int64_t {
  LMRTCResourceStateDisabled = 0,
  LMRTCResourceStateNormal = 1,
};

/// What a live room carries.
enum LMRTCLiveType : std::int64_t {
  LMRTCLiveTypeAudioVideo = 0,
  LMRTCLiveTypeAudio = 1,
};

enum LMRTCRoomType : std::int64_t {
  LMRTCRoomTypeNormal = 0,
  LMRTCRoomTypeLive = 2,
};

/// The part a member plays in a live room.
enum LMRTCRoleType : std::int64_t {
  LMRTCRoleTypeBroadcaster = 0,
  LMRTCRoleTypeAudience = 1,
};

/// How the server admits a member; the meaning of the numbers is the server's.
enum LMRTCJoinRoomType : std::int64_t {
  LMRTCJoinRoomTypeDefault = 0,
  LMRTCJoinRoomTypeExclusive = 1,
};

/// Audio codecs are numbered by their RTP payload type.
enum LMRTCAudioCodecType : std::int64_t {
  LMRTCAudioCodecTypePCMU = 0,
  LMRTCAudioCodecTypeOpus = 111,
};

/// Where a camera is, as capture devices number it.
enum LMRTCDeviceCamera : std::int64_t {
  LMRTCDeviceCameraUnspecified = 0,
  LMRTCDeviceCameraBack = 1,
  LMRTCDeviceCameraFront = 2,
};

/// Frame rates of video streams, pictures per second.
enum LMRTCVideoFPS : std::int64_t {
  LMRTCVideoFPSDefault = -1,  ///< left to the SDK
  LMRTCVideoFPS10 = 0,
  LMRTCVideoFPS15 = 1,
  LMRTCVideoFPS24 = 2,
  LMRTCVideoFPS30 = 3,
};

/// Sizes of video streams, numbered from the smallest to the largest; LMRTCIWConfigUtility::getVideoSize has
/// their pixels.
enum LMRTCVideoSizePreset : std::int64_t {
  LMRTCVideoSizePresetDefault = -1,  ///< left to the SDK
  LMRTCVideoSizePresetSmallest = 0,  ///< 144 x 176
  LMRTCVideoSizePresetLargest = 16,  ///< 1080 x 1920
};

/// What the microphone's sound is encoded for, 0 to 2; the meaning of the numbers is the SDK's.
enum LMRTCAudioQuality : std::int64_t {};
enum LMRTCAudioScenario : std::int64_t {};

/// How the audio mixer puts its file and the microphone together.
enum LMRTCMixerMode : std::int64_t {
  LMRTCMixerModeLocalOnly = 0,  ///< the file is not sent
  LMRTCMixerModeMix = 1,        ///< both are sent
  LMRTCMixerModeReplace = 2,    ///< the file is sent in place of the microphone, except while it is paused
};

/// How the live mix places its pictures.
enum LMRTCMixLayoutMode : std::int64_t {
  LMRTCMixLayoutModeCustom = 1,      ///< where custom layouts say
  LMRTCMixLayoutModeSuspension = 2,  ///< one large, the others small over it
  LMRTCMixLayoutModeAdaptive = 3,    ///< an even grid
};

/// How the live mix fits a picture into its place.
enum LMRTCVideoRenderMode : std::int64_t {
  LMRTCVideoRenderModeCrop = 1,   ///< fill the place, cropping what does not fit
  LMRTCVideoRenderModeWhole = 2,  ///< show the whole picture
};

/// How a picture fills a view of another shape.
enum LMRTCVideoFillMode : std::int64_t {
  LMRTCVideoFillModeStretch = 0,     ///< fill the view, ignoring the picture's shape
  LMRTCVideoFillModeAspectFill = 1,  ///< fill the view, cropping what does not fit
  LMRTCVideoFillModeAspectFit = 2,   ///< show the whole picture, with black bars
};

/// The tag that every default (microphone or camera) stream carries.
inline constexpr char kLMRTCDefaultStreamTag[] = "LumoCloudRTC";
