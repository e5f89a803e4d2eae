#include "LumoRTCLocal/sdk/FileReading.h"

#include <optional>
#include <utility>

#include "LumoRTCLocal/media/AudioFilePlayer.h"

namespace lumo {

FileReading::Opened FileReading::open(const std::string& path, Target target, std::function<void()> ended) {
  const std::shared_ptr<FileReading> reading(new FileReading(std::move(target), std::move(ended)));
  const std::weak_ptr<FileReading> weak = reading;
  const auto partEnded = [weak] {
    if (const auto self = weak.lock()) self->partEnded();
  };
  auto pictures = FilePictures::open(path, partEnded);
  if (!pictures.pictures) return {nullptr, std::move(pictures.error)};
  reading->pictures_ = std::move(pictures.pictures);

  auto sound = AudioFilePlayer::open(reading->target_.decoding, path, 1);
  if (!sound.player) return {reading, {}};
  reading->partsLeft_ = 2;
  reading->voice_ = std::make_shared<FileVoice>(
      std::move(sound.player),
      [partEnded](const FileVoice&, const std::optional<AudioFilePlayer::Read>& result) {
        if (result != AudioFilePlayer::Read::sound && result != AudioFilePlayer::Read::underrun) partEnded();
      });
  reading->voice_->setPublishGain(0);
  reading->voice_->setPlaybackGain(0);
  return {reading, {}};
}

FileReading::FileReading(Target target, std::function<void()> ended)
    : target_(std::move(target)), ended_(std::move(ended)) {}

void FileReading::start() {
  target_.pipeline->setContinuous(true);
  target_.pipeline->setSource(pictures_);
  if (voice_) target_.playback->add(voice_);
}

void FileReading::stop() {
  target_.pipeline->setContinuous(false);
  target_.pipeline->setSource(nullptr);
  if (voice_) target_.playback->remove(voice_);
}

void FileReading::partEnded() {
  if (partsLeft_.fetch_sub(1) == 1) ended_();
}

}  // namespace lumo
