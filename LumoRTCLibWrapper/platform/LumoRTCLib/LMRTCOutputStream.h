#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStream.h"

class LMRTCVideoRenderer;
class LMRTCVideoStreamConfig;

/// A stream that the local user can publish.
class LMRTCOutputStream : public LMRTCStream {};

/// The microphone.
class LMRTCAudioOutputStream : public LMRTCOutputStream {
 public:
  /// @param quality   0 to 2, the SDK's audio quality
  /// @param scenario  0 to 2, the SDK's audio scenario
  virtual void setAudioQuality(std::int64_t quality, std::int64_t scenario) = 0;

  /// @param volume  percent of the captured level; 100 leaves it as it is
  virtual void setRecordingVolume(std::uint64_t volume) = 0;

  /// @param type  LMRTCAudioCodecType
  virtual void setAudioCodecType(std::int64_t type) = 0;
};

/// Pictures of the local user that can be shown locally.
class LMRTCVideoOutputStream : public LMRTCOutputStream {
 public:
  /// As LMRTCVideoInputStream::setVideoView.
  virtual void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) = 0;

  /// Size, frame rate and bit rate of the normal stream.
  virtual void setVideoConfig(const LMRTCVideoStreamConfig& config) = 0;
};

/// The camera.
class LMRTCCameraVideoOutputStream : public LMRTCVideoOutputStream {
 public:
  /// Size, frame rate and bit rate of the small ("tiny") stream that goes out beside the normal one.
  virtual void setTinyVideoConfig(const LMRTCVideoStreamConfig& config) = 0;

  /// Whether the small stream goes out at all.
  virtual void setEnableTinyStream(bool enabled) = 0;

  /// Mirrors what is sent, left to right; the local preview stays as it is.
  virtual void setIsEncoderMirror(bool mirror) = 0;
};

/// A media file, sent as pictures and sound.
class LMRTCFileVideoOutputStream : public LMRTCVideoOutputStream {
 public:
  /// Ends reading the file. Does nothing when it is not being read.
  virtual void stop() = 0;
};
