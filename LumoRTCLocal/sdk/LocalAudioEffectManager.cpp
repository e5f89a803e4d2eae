#include "LumoRTCLocal/sdk/LocalAudioEffectManager.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLocal/media/FileUrl.h"

namespace lumo {
namespace {

constexpr std::uint64_t kMostVolume = 400;

double fractionOf(std::uint64_t volume) { return static_cast<double>(volume) / 100; }

bool goesOn(std::optional<AudioFilePlayer::Read> result) {
  using Read = AudioFilePlayer::Read;
  return !result || *result == Read::sound || *result == Read::underrun;
}

}  // namespace

LocalAudioEffectManager::LocalAudioEffectManager(std::shared_ptr<Runner> decoding,
                                                 std::shared_ptr<FilePlayback> files)
    : decoding_(std::move(decoding)), files_(std::move(files)) {}

void LocalAudioEffectManager::playEffect(std::int64_t effectId, const std::string& filePath,
                                         std::int64_t loopCount, bool publish) {
  const auto opened = AudioFilePlayer::open(decoding_, pathOfUrl(filePath), loopCount);
  if (!opened.player) return;
  const auto voice = std::make_shared<FileVoice>(
      opened.player, [weak = weak_from_this(), effectId](const FileVoice& played, auto result) {
        if (goesOn(result)) return;
        if (const auto self = weak.lock()) self->voiceEnded(effectId, played);
      });
  const std::lock_guard lock(mutex_);
  Effect& effect = effects_[effectId];
  effect.isPublished = publish;
  if (const auto former = std::exchange(effect.voice, voice)) files_->remove(former);
  setGainLocked(effect);
  files_->add(voice);
}

void LocalAudioEffectManager::setVolumeOfEffect(std::int64_t effectId, std::uint64_t volume) {
  const std::lock_guard lock(mutex_);
  Effect& effect = effects_[effectId];
  effect.volume = std::min(volume, kMostVolume);
  setGainLocked(effect);
}

std::int64_t LocalAudioEffectManager::getVolumeOfEffectId(std::int64_t effectId) const {
  const std::lock_guard lock(mutex_);
  const auto effect = effects_.find(effectId);
  return static_cast<std::int64_t>(effect == effects_.end() ? Effect().volume : effect->second.volume);
}

void LocalAudioEffectManager::pauseEffect(std::int64_t effectId) { setPaused(effectId, true); }

void LocalAudioEffectManager::resumeEffect(std::int64_t effectId) { setPaused(effectId, false); }

void LocalAudioEffectManager::stopEffect(std::int64_t effectId) {
  const std::lock_guard lock(mutex_);
  const auto effect = effects_.find(effectId);
  if (effect == effects_.end()) return;
  if (const auto voice = std::exchange(effect->second.voice, nullptr)) files_->remove(voice);
}

void LocalAudioEffectManager::pauseAllEffects() { setAllPaused(true); }

void LocalAudioEffectManager::resumeAllEffects() { setAllPaused(false); }

void LocalAudioEffectManager::stopAllEffects() {
  const std::lock_guard lock(mutex_);
  for (auto& [effectId, effect] : effects_) {
    if (const auto voice = std::exchange(effect.voice, nullptr)) files_->remove(voice);
  }
}

void LocalAudioEffectManager::setEffectsVolume(std::uint64_t volume) {
  const std::lock_guard lock(mutex_);
  commonVolume_ = std::min(volume, kMostVolume);
  for (const auto& [effectId, effect] : effects_) setGainLocked(effect);
}

std::int64_t LocalAudioEffectManager::getEffectsVolume() const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::int64_t>(commonVolume_);
}

void LocalAudioEffectManager::setGainLocked(const Effect& effect) const {
  if (!effect.voice) return;
  const double gain = fractionOf(effect.volume) * fractionOf(commonVolume_);
  effect.voice->setPublishGain(effect.isPublished ? gain : 0);
  effect.voice->setPlaybackGain(gain);
}

void LocalAudioEffectManager::setPaused(std::int64_t effectId, bool paused) {
  const std::lock_guard lock(mutex_);
  const auto effect = effects_.find(effectId);
  if (effect != effects_.end() && effect->second.voice) effect->second.voice->setPaused(paused);
}

void LocalAudioEffectManager::setAllPaused(bool paused) {
  const std::lock_guard lock(mutex_);
  for (const auto& [effectId, effect] : effects_) {
    if (effect.voice) effect.voice->setPaused(paused);
  }
}

void LocalAudioEffectManager::voiceEnded(std::int64_t effectId, const FileVoice& voice) {
  const std::lock_guard lock(mutex_);
  const auto effect = effects_.find(effectId);
  if (effect != effects_.end() && effect->second.voice.get() == &voice) effect->second.voice = nullptr;
}

}  // namespace lumo
