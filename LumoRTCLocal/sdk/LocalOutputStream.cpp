#include "LumoRTCLocal/sdk/LocalOutputStream.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLocal/sdk/VideoPresets.h"

namespace lumo {
namespace {

constexpr std::uint64_t kFullVolume = 100;

StreamName defaultStream(const std::string& userId, std::int64_t mediaType) {
  return {userId, kLMRTCDefaultStreamTag, mediaType, LMRTCMediaStreamTypeNormal};
}

/// `present`, with what `config` sets.
VideoFormat configured(const VideoFormat& present, const LMRTCVideoStreamConfig& config) {
  VideoFormat format = presetFormat(config.videoSizePreset(), present).value_or(present);
  format.framesPerSecond = presetFrameRate(config.videoFps()).value_or(present.framesPerSecond);
  return format;
}

}  // namespace

/// The captured sound at the recording volume.
class LocalMicrophone::Capture : public AudioSource {
 public:
  explicit Capture(std::unique_ptr<AudioSource> source) : source_(std::move(source)) {}

  void setVolume(std::uint64_t volume) { volume_.store(volume, std::memory_order_relaxed); }

  void read(AudioBlock& block) override {
    source_->read(block);
    const std::uint64_t volume = volume_.load(std::memory_order_relaxed);
    if (volume == kFullVolume) return;
    mix_.clear();
    mix_.add(block, static_cast<double>(volume) / double{kFullVolume});
    mix_.write(block);
  }

 private:
  const std::unique_ptr<AudioSource> source_;
  std::atomic<std::uint64_t> volume_{kFullVolume};
  AudioMix mix_;
};

LocalMicrophone::LocalMicrophone(const std::string& userId, std::unique_ptr<AudioSource> tone,
                                 std::shared_ptr<MediaServer> server, std::shared_ptr<AudioExchange> exchange)
    : LocalStream(defaultStream(userId, LMRTCMediaTypeAudio)),
      capture_(std::make_shared<Capture>(std::move(tone))),
      server_(std::move(server)),
      exchange_(std::move(exchange)) {}

void LocalMicrophone::setIsMute(bool mute) {
  LocalStream::setIsMute(mute);
  if (const auto open = publication()) server_->setEnabled(open, !mute);
}

void LocalMicrophone::setAudioQuality(std::int64_t /*quality*/, std::int64_t /*scenario*/) {}

void LocalMicrophone::setRecordingVolume(std::uint64_t volume) { capture_->setVolume(volume); }

void LocalMicrophone::setAudioCodecType(std::int64_t /*type*/) {}

std::shared_ptr<Publication> LocalMicrophone::makePublication() {
  return Publication::create(name(), !isMute(), capture_,
                             [weak = std::weak_ptr<AudioExchange>(exchange_)](const auto& changed) {
                               if (const auto exchange = weak.lock()) exchange->update(changed);
                             });
}

void LocalMicrophone::attach(const std::shared_ptr<Publication>& publication) {
  LocalOutput::attach(publication);
  if (publication) server_->setEnabled(publication, !isMute());  // it may have been muted meanwhile
}

LocalCamera::LocalCamera(const std::string& userId, std::shared_ptr<CameraPipeline> pipeline,
                         std::shared_ptr<MediaServer> server)
    : LocalStream(defaultStream(userId, LMRTCMediaTypeVideo)),
      pipeline_(std::move(pipeline)),
      server_(std::move(server)) {}

void LocalCamera::setIsMute(bool mute) {
  LocalStream::setIsMute(mute);
  if (const auto open = publication()) server_->setEnabled(open, !mute);
}

void LocalCamera::setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) {
  pipeline_->setPreview(view);
}

void LocalCamera::setVideoConfig(const LMRTCVideoStreamConfig& config) {
  pipeline_->setFormat(configured(pipeline_->format(), config));
}

void LocalCamera::setTinyVideoConfig(const LMRTCVideoStreamConfig& config) {
  pipeline_->setTinyFormat(configured(pipeline_->tinyFormat(), config));
}

void LocalCamera::setEnableTinyStream(bool enabled) { pipeline_->setTinyEnabled(enabled); }

void LocalCamera::setIsEncoderMirror(bool mirror) { pipeline_->setMirror(mirror); }

std::shared_ptr<Publication> LocalCamera::makePublication() {
  return Publication::create(name(), !isMute(), nullptr,
                             [weak = std::weak_ptr<CameraPipeline>(pipeline_)](const auto&) {
                               if (const auto pipeline = weak.lock()) pipeline->update();
                             });
}

void LocalCamera::attach(const std::shared_ptr<Publication>& publication) {
  LocalOutput::attach(publication);
  pipeline_->setPublication(publication);
  if (publication) server_->setEnabled(publication, !isMute());  // it may have been muted meanwhile
}

}  // namespace lumo
