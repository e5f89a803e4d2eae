#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/WavWriter.h"
#include "LumoRTCLocal/sdk/CameraPair.h"
#include "LumoRTCLocal/sdk/CameraPipeline.h"
#include "LumoRTCLocal/sdk/EchoTest.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"
#include "LumoRTCLocal/sdk/LocalStream.h"
#include "LumoRTCLocal/server/AudioExchange.h"
#include "LumoRTCLocal/server/MediaServer.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// What publishing needs of an output stream. Any thread.
class LocalOutput {
 public:
  virtual ~LocalOutput() = default;

  /// The publication that the stream sends to; null while it is not published.
  std::shared_ptr<Publication> publication() const { return publication_.get(); }
  /// A new publication of this stream, not yet open.
  virtual std::shared_ptr<Publication> makePublication() = 0;
  /// Sends to `publication` from now on; null stops sending.
  virtual void attach(const std::shared_ptr<Publication>& publication) { publication_.set(publication); }

 private:
  Cell<std::shared_ptr<Publication>> publication_;
};

/// The microphone: a tone, at the recording volume, sent together with the sound files that are published. It
/// captures while it is published, watched or tested.
class LocalMicrophone : public LocalStream<LMRTCAudioOutputStream>, public LocalOutput {
 public:
  /// @param tone   what the microphone hears
  /// @param files  what is sent with it
  LocalMicrophone(const std::string& userId, std::unique_ptr<AudioSource> tone,
                  std::shared_ptr<MediaServer> server, std::shared_ptr<AudioExchange> exchange,
                  std::shared_ptr<FilePlayback> files);

  /// Between the engine's initialisation and its end. The end also takes the callbacks away, ends the echo
  /// test and switches the microphone on again.
  void setActive(bool active);

  /// Writes what is sent, silence while it is muted or disabled, for as long as it captures; null ends it.
  void setRecorder(std::shared_ptr<WavWriter> recorder);

  /// Gives what it captures, silence while it is disabled, to an echo test in place of the one before; null
  /// ends it. Nothing happens while the engine is not initialised.
  void setEchoTest(std::shared_ptr<EchoTest> test);

  void setIsMute(bool mute) override;
  /// Without effect: sound goes uncompressed from member to member.
  void setAudioQuality(std::int64_t quality, std::int64_t scenario) override;
  void setRecordingVolume(std::uint64_t volume) override;
  /// Without effect, as setAudioQuality.
  void setAudioCodecType(std::int64_t type) override;
  /// While it is disabled nothing is captured, and but for sound files nothing is sent, not even silence; the
  /// other members are not told.
  void setMicrophoneDisable(bool disabled) override;
  /// What is captured, at the recording volume: also when it is muted or not published.
  void setRecordAudioDataCallback(LMRTCAudioDataCallback callback) override;
  /// What goes out while the stream is published and not muted: also when nobody has subscribed.
  void setWillSendAudioBufferCallback(LMRTCAudioDataCallback callback) override;

  std::shared_ptr<Publication> makePublication() override;
  void attach(const std::shared_ptr<Publication>& publication) override;

 private:
  class Capture;

  void updateCapture();

  const std::shared_ptr<Capture> capture_;
  const std::shared_ptr<MediaServer> server_;
  const std::shared_ptr<AudioExchange> exchange_;
  std::mutex mutex_;  ///< guards what follows, together with the capture's place in the exchange
  bool active_ = false;
  std::shared_ptr<EchoTest> echoTest_;
};

/// The camera: a front and a back one, of which one is in use.
class LocalCamera : public LocalStream<LMRTCCameraVideoOutputStream>, public LocalOutput {
 public:
  /// @param cameras  whose position is set
  LocalCamera(const std::string& userId, std::shared_ptr<CameraPipeline> pipeline,
              std::shared_ptr<CameraPair> cameras, std::shared_ptr<MediaServer> server);

  /// At the engine's end: takes view and callback away and brings camera, orientation, focus and exposure
  /// back to where they start.
  void reset();

  /// Where focus and exposure were set last, in the coordinates of the preview; nothing before.
  std::optional<UIPoint> focusPosition() const { return focus_.get(); }
  std::optional<UIPoint> exposurePosition() const { return exposure_.get(); }

  void setIsMute(bool mute) override;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override;
  /// Bit rates are without effect: pictures go uncompressed from member to member.
  void setVideoConfig(const LMRTCVideoStreamConfig& config) override;
  void setTinyVideoConfig(const LMRTCVideoStreamConfig& config) override;
  void setEnableTinyStream(bool enabled) override;
  void setIsEncoderMirror(bool mirror) override;
  /// The callback sees the pictures of the published camera, also when nobody has subscribed. What it returns
  /// is mirrored, scaled and sent, with the time at which the picture was captured; the preview shows what
  /// was captured.
  void setVideoSendBufferCallback(SendBufferCallback callback) override;
  /// A stopped camera captures nothing: neither the preview nor the other members get pictures.
  void startCapture() override;
  void stopCapture() override;
  void setCameraPosition(std::int64_t position) override;
  std::int64_t cameraPosition() const override;
  void switchCamera() override;
  bool isCameraFocusSupported() const override { return true; }
  bool isCameraExposurePositionSupported() const override { return true; }
  /// Kept, without effect on the pictures.
  void setCameraFocusPositionInPreview(const UIPoint& point) override { focus_.set(point); }
  void setCameraExposurePositionInPreview(const UIPoint& point) override { exposure_.set(point); }
  /// Pictures are sent as they are captured, with the rotation that turns them upright. Numbers beyond 0 to 3
  /// change nothing.
  void setVideoOrientation(std::int64_t orientation) override;

  /// The image is copied. Everybody sees it upright and unmirrored, at that place in the upright picture,
  /// which `position` is about: preview, members, live mix. Observers of sent pictures see it the other way
  /// round while what is sent is mirrored.
  /// @return false, and nothing changes, for what Watermark::create refuses
  bool setWaterMark(const std::shared_ptr<const UIImage>& image, const UIRect& position) override;

  std::shared_ptr<Publication> makePublication() override;
  void attach(const std::shared_ptr<Publication>& publication) override;

 private:
  const std::shared_ptr<CameraPipeline> pipeline_;
  const std::shared_ptr<CameraPair> cameras_;
  const std::shared_ptr<MediaServer> server_;
  Cell<std::optional<UIPoint>> focus_;
  Cell<std::optional<UIPoint>> exposure_;
};

}  // namespace lumo
