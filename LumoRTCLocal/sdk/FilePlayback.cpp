#include "LumoRTCLocal/sdk/FilePlayback.h"

#include <utility>

namespace lumo {

void FilePlayback::add(std::shared_ptr<FileVoice> voice) {
  const std::lock_guard lock(mutex_);
  voices_.push_back(std::move(voice));
  if (const auto exchange = exchange_.lock()) exchange->addListener(shared_from_this());
}

void FilePlayback::remove(const std::shared_ptr<FileVoice>& voice) {
  const std::lock_guard lock(mutex_);
  std::erase(voices_, voice);
  if (!voices_.empty()) return;
  if (const auto exchange = exchange_.lock()) exchange->removeListener(shared_from_this());
}

void FilePlayback::audioTickBegins(Microseconds time) {
  if (std::exchange(time_, time) == time) return;  // the microphone was told first
  {
    const std::lock_guard lock(mutex_);
    current_ = voices_;
  }
  published_.clear();
  playedBack_.clear();
  isPublishing_ = false;
  isPlayedBack_ = false;
  replacesMicrophone_ = false;
  for (const auto& voice : current_) {
    if (!play(*voice)) remove(voice);
  }
  current_.clear();
  if (isPlayedBack_) speaker_->addLocal(playedBack_);
}

bool FilePlayback::play(FileVoice& voice) {
  if (voice.isPaused()) {
    voice.listener_(voice, std::nullopt);
    return true;
  }
  voice.hasBlock_ = false;
  const auto result = voice.player_->read(block_);
  const bool goesOn = result == AudioFilePlayer::Read::sound || result == AudioFilePlayer::Read::underrun;
  if (goesOn) {
    const double publishGain = voice.publishGain_.load(std::memory_order_relaxed);
    const double playbackGain = voice.playbackGain_.load(std::memory_order_relaxed);
    if (voice.hasPublication_.load(std::memory_order_relaxed)) voice.keep(block_);
    if (publishGain > 0) published_.add(block_, publishGain);
    if (playbackGain > 0) playedBack_.add(block_, playbackGain);
    isPublishing_ = isPublishing_ || publishGain > 0;
    isPlayedBack_ = isPlayedBack_ || playbackGain > 0;
    replacesMicrophone_ = replacesMicrophone_ || voice.replacesMicrophone_.load(std::memory_order_relaxed);
  }
  voice.listener_(voice, result);
  return goesOn;
}

bool FilePlayback::publish(AudioBlock& block, Microseconds time) {
  audioTickBegins(time);
  if (!isPublishing_ && !replacesMicrophone_) return false;
  if (!replacesMicrophone_) published_.add(block);
  published_.write(block);
  return true;
}

}  // namespace lumo
