#include "LumoRTCLocal/sdk/LocalOutputStream.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/VideoPresets.h"
#include "LumoRTCLocal/sdk/AudioTap.h"

namespace lumo {
namespace {

constexpr std::uint64_t kFullVolume = 100;
constexpr AudioBlock kSilence;

StreamName defaultStream(const std::string& userId, std::int64_t mediaType) {
  return {userId, kLMRTCDefaultStreamTag, mediaType, LMRTCMediaStreamTypeNormal};
}

}  // namespace

/// The captured sound at the recording volume and the files that go with it: one block per tick, whoever
/// takes it.
class LocalMicrophone::Capture : public AudioSource, public AudioTickListener {
 public:
  Capture(std::unique_ptr<AudioSource> source, std::shared_ptr<FilePlayback> files)
      : source_(std::move(source)), files_(std::move(files)) {}

  void setVolume(std::uint64_t volume) { volume_.store(volume, std::memory_order_relaxed); }

  void setEnabled(bool enabled) { enabled_.store(enabled, std::memory_order_relaxed); }
  void setTarget(const std::shared_ptr<Publication>& publication) { target_.set(publication); }
  void setEchoTest(std::shared_ptr<EchoTest> test) { echoTest_.set(std::move(test)); }

  AudioTap& recordTap() { return recordTap_; }
  AudioTap& sendTap() { return sendTap_; }
  void setRecorder(std::shared_ptr<WavWriter> recorder) { recorder_.set(std::move(recorder)); }

  void audioTickBegins(Microseconds time) override {
    const bool isCaptured = enabled_.load(std::memory_order_relaxed);
    if (isCaptured) {
      source_->read(block_);
      applyVolume();
      recordTap_.deliver(block_, time);
    } else {
      block_.samples.fill(0);
    }
    if (const auto test = echoTest_.get()) test->take(block_);
    hasSound_ = files_->publish(block_, time) || isCaptured;
    const auto target = target_.get();
    const bool isSent = hasSound_ && target && target->isEnabled();
    if (isSent) sendTap_.deliver(block_, time);
    if (isSent && !target->isWanted()) target->meter(false)->hear(block_);  // else it is measured when sent
    if (const auto recorder = recorder_.get()) recorder->add(isSent ? block_ : kSilence);
  }

  bool hasSound() const override { return hasSound_; }
  void read(AudioBlock& block) override {
    block = block_;
    hasSound_ = false;
  }

 private:
  void applyVolume() {
    const std::uint64_t volume = volume_.load(std::memory_order_relaxed);
    if (volume == kFullVolume) return;
    mix_.clear();
    mix_.add(block_, static_cast<double>(volume) / double{kFullVolume});
    mix_.write(block_);
  }

  const std::unique_ptr<AudioSource> source_;
  const std::shared_ptr<FilePlayback> files_;
  std::atomic<std::uint64_t> volume_{kFullVolume};
  std::atomic<bool> enabled_{true};
  WeakCell<Publication> target_;  ///< what is sent; weak, as it owns the capture
  Cell<std::shared_ptr<EchoTest>> echoTest_;
  AudioTap recordTap_;
  AudioTap sendTap_;
  Cell<std::shared_ptr<WavWriter>> recorder_;

  // Audio runner only.
  AudioMix mix_;
  AudioBlock block_;
  bool hasSound_ = false;  ///< the block is of this tick and has not been read
};

LocalMicrophone::LocalMicrophone(const std::string& userId, std::unique_ptr<AudioSource> tone,
                                 std::shared_ptr<MediaServer> server, std::shared_ptr<AudioExchange> exchange,
                                 std::shared_ptr<FilePlayback> files)
    : LocalStream(defaultStream(userId, LMRTCMediaTypeAudio)),
      capture_(std::make_shared<Capture>(std::move(tone), std::move(files))),
      server_(std::move(server)),
      exchange_(std::move(exchange)) {}

void LocalMicrophone::setActive(bool active) {
  if (!active) {
    capture_->recordTap().set({});
    capture_->sendTap().set({});
    capture_->setEnabled(true);
  }
  {
    const std::lock_guard lock(mutex_);
    active_ = active;
  }
  if (!active) setEchoTest(nullptr);
  updateCapture();
}

void LocalMicrophone::setRecorder(std::shared_ptr<WavWriter> recorder) {
  capture_->setRecorder(std::move(recorder));
}

void LocalMicrophone::setEchoTest(std::shared_ptr<EchoTest> test) {
  {
    const std::lock_guard lock(mutex_);
    if (test && !active_) return;
    if (echoTest_) exchange_->removeListener(echoTest_);
    if (test) exchange_->addListener(test);
    capture_->setEchoTest(test);
    std::swap(echoTest_, test);  // the former one goes after the lock
  }
  updateCapture();
}

void LocalMicrophone::setIsMute(bool mute) {
  LocalStream::setIsMute(mute);
  if (const auto open = publication()) server_->setEnabled(open, !mute);
}

void LocalMicrophone::setAudioQuality(std::int64_t /*quality*/, std::int64_t /*scenario*/) {}

void LocalMicrophone::setRecordingVolume(std::uint64_t volume) { capture_->setVolume(volume); }

void LocalMicrophone::setAudioCodecType(std::int64_t /*type*/) {}

void LocalMicrophone::setMicrophoneDisable(bool disabled) { capture_->setEnabled(!disabled); }

void LocalMicrophone::setRecordAudioDataCallback(LMRTCAudioDataCallback callback) {
  capture_->recordTap().set(std::move(callback));
  updateCapture();
}

void LocalMicrophone::setWillSendAudioBufferCallback(LMRTCAudioDataCallback callback) {
  capture_->sendTap().set(std::move(callback));
}

std::shared_ptr<Publication> LocalMicrophone::makePublication() {
  return Publication::create(name(), !isMute(), capture_, demandOf(exchange_));
}

void LocalMicrophone::attach(const std::shared_ptr<Publication>& publication) {
  LocalOutput::attach(publication);
  capture_->setTarget(publication);
  updateCapture();
  if (publication) server_->setEnabled(publication, !isMute());  // it may have been muted meanwhile
}

void LocalMicrophone::updateCapture() {
  const std::lock_guard lock(mutex_);
  if (active_ && (publication() || capture_->recordTap().isSet() || echoTest_)) {
    exchange_->addListener(capture_);
  } else {
    exchange_->removeListener(capture_);
  }
}

LocalCamera::LocalCamera(const std::string& userId, std::shared_ptr<CameraPipeline> pipeline,
                         std::shared_ptr<CameraPair> cameras, std::shared_ptr<MediaServer> server)
    : LocalStream(defaultStream(userId, LMRTCMediaTypeVideo)),
      pipeline_(std::move(pipeline)),
      cameras_(std::move(cameras)),
      server_(std::move(server)) {}

void LocalCamera::reset() {
  pipeline_->setPreview(nullptr);
  pipeline_->setSendCallback({});
  pipeline_->setCapturing(true);
  pipeline_->setRotation(0);
  pipeline_->setWatermark(nullptr);
  cameras_->setPosition(LMRTCDeviceCameraFront);
  focus_.set({});
  exposure_.set({});
}

void LocalCamera::setIsMute(bool mute) {
  LocalStream::setIsMute(mute);
  if (const auto open = publication()) server_->setEnabled(open, !mute);
}

void LocalCamera::setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) {
  pipeline_->setPreview(view);
}

void LocalCamera::setVideoConfig(const LMRTCVideoStreamConfig& config) {
  pipeline_->setFormat(configuredFormat(pipeline_->format(), config));
}

void LocalCamera::setTinyVideoConfig(const LMRTCVideoStreamConfig& config) {
  pipeline_->setTinyFormat(configuredFormat(pipeline_->tinyFormat(), config));
}

void LocalCamera::setEnableTinyStream(bool enabled) { pipeline_->setTinyEnabled(enabled); }

void LocalCamera::setIsEncoderMirror(bool mirror) { pipeline_->setMirror(mirror); }

void LocalCamera::setVideoSendBufferCallback(SendBufferCallback callback) {
  pipeline_->setSendCallback(std::move(callback));
}

void LocalCamera::startCapture() { pipeline_->setCapturing(true); }

void LocalCamera::stopCapture() { pipeline_->setCapturing(false); }

void LocalCamera::setCameraPosition(std::int64_t position) { cameras_->setPosition(position); }

std::int64_t LocalCamera::cameraPosition() const { return cameras_->position(); }

void LocalCamera::switchCamera() { cameras_->switchPosition(); }

void LocalCamera::setVideoOrientation(std::int64_t orientation) {
  if (orientation < 0 || orientation > 3) return;
  pipeline_->setRotation(static_cast<std::int32_t>(orientation) * 90);
}

bool LocalCamera::setWaterMark(const std::shared_ptr<const UIImage>& image, const UIRect& position) {
  auto watermark = image ? Watermark::create(*image, position) : nullptr;
  if (image && !watermark) return false;
  pipeline_->setWatermark(std::move(watermark));
  return true;
}

std::shared_ptr<Publication> LocalCamera::makePublication() {
  return Publication::create(name(), !isMute(), nullptr, demandOf(pipeline_));
}

void LocalCamera::attach(const std::shared_ptr<Publication>& publication) {
  LocalOutput::attach(publication);
  pipeline_->setPublication(publication);
  if (publication) server_->setEnabled(publication, !isMute());  // it may have been muted meanwhile
}

}  // namespace lumo
