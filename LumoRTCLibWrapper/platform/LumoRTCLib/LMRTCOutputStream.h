#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioData.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStream.h"

class LMRTCVideoRenderer;
class LMRTCVideoStreamConfig;
struct CMSampleBuffer;
struct UIImage;
struct UIPoint;
struct UIRect;

/// A stream that the local user can publish.
class LMRTCOutputStream : public LMRTCStream {};

/// The microphone.
class LMRTCAudioOutputStream : public LMRTCOutputStream {
 public:
  /// @param quality   LMRTCAudioQuality
  /// @param scenario  LMRTCAudioScenario
  virtual void setAudioQuality(std::int64_t quality, std::int64_t scenario) = 0;

  /// @param volume  percent of the captured level; 100 leaves it as it is
  virtual void setRecordingVolume(std::uint64_t volume) = 0;

  /// @param type  LMRTCAudioCodecType
  virtual void setAudioCodecType(std::int64_t type) = 0;

  /// A disabled microphone captures nothing.
  virtual void setMicrophoneDisable(bool disabled) = 0;

  /// Hands on what the microphone captures; empty ends it.
  virtual void setRecordAudioDataCallback(LMRTCAudioDataCallback callback) = 0;

  /// Hands on what is about to be sent, after everything is mixed in; empty ends it.
  virtual void setWillSendAudioBufferCallback(LMRTCAudioDataCallback callback) = 0;
};

/// Pictures of the local user that can be shown locally.
class LMRTCVideoOutputStream : public LMRTCOutputStream {
 public:
  using SendBufferCallback =
      std::function<std::shared_ptr<CMSampleBuffer>(const std::shared_ptr<CMSampleBuffer>& buffer)>;

  /// Hands each picture on, on the capture thread, before it is sent; what the callback returns is sent, null
  /// sends nothing. An empty callback ends it. The given pixels are planar and must not be written; the
  /// returned ones may be of any CVPixelFormat and must have the same size.
  virtual void setVideoSendBufferCallback(SendBufferCallback callback) = 0;

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

  /// Starts and stops the camera. A stopped camera sends nothing.
  virtual void startCapture() = 0;
  virtual void stopCapture() = 0;

  /// LMRTCDeviceCamera; another position switches the camera at once.
  virtual void setCameraPosition(std::int64_t position) = 0;
  virtual std::int64_t cameraPosition() const = 0;
  /// From front to back, or the reverse.
  virtual void switchCamera() = 0;

  virtual bool isCameraFocusSupported() const = 0;
  virtual bool isCameraExposurePositionSupported() const = 0;
  /// @param point  in the coordinates of the preview
  virtual void setCameraFocusPositionInPreview(const UIPoint& point) = 0;
  virtual void setCameraExposurePositionInPreview(const UIPoint& point) = 0;
  /// Draws a picture over what is captured.
  /// @param image     null takes the watermark away
  /// @param position  origin: its place in the captured picture, as fractions of width and height; width: its
  ///                  zoom, a fraction of the captured width; height: not used
  /// @return whether the SDK accepted it
  virtual bool setWaterMark(const std::shared_ptr<const UIImage>& image, const UIRect& position) = 0;

  /// @param orientation  the SDK's number of the device orientation: 0 to 3 for 0, 90, 180 and 270 degrees
  /// clockwise
  virtual void setVideoOrientation(std::int64_t orientation) = 0;
};
