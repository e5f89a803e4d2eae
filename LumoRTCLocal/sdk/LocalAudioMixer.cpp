#include "LumoRTCLocal/sdk/LocalAudioMixer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "LumoRTCLocal/media/FileUrl.h"

namespace lumo {
namespace {

using Read = AudioFilePlayer::Read;

constexpr std::uint64_t kFullVolume = 100;
constexpr std::int32_t kTicksPerReport = 20;
constexpr double kMostSeconds = 1e9;  // keeps the microseconds in range

double gainOf(std::uint64_t volume) { return static_cast<double>(volume) / double{kFullVolume}; }

double secondsOf(Microseconds time) { return std::chrono::duration<double>(time).count(); }

/// The player's way to say it: 0 and below is endless.
std::int64_t passesOf(std::uint64_t loopCount) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(std::min(loopCount, kMost));
}

std::uint64_t endReason(Read result) {
  switch (result) {
    case Read::cutOff:
      return LocalMixingReasonFileCutOff;
    case Read::failed:
      return LocalMixingReasonFileUnreadable;
    default:
      return LocalMixingReasonEndOfFile;
  }
}

}  // namespace

LocalAudioMixer::LocalAudioMixer(std::shared_ptr<Runner> sdk, std::shared_ptr<Runner> decoding,
                                 std::shared_ptr<FilePlayback> files)
    : sdk_(std::move(sdk)), decoding_(std::move(decoding)), files_(std::move(files)) {}

void LocalAudioMixer::setDelegate(std::weak_ptr<LMRTCAudioMixerAudioPlayDelegate> delegate) {
  const std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

bool LocalAudioMixer::startMixingWithURL(const std::string& url, bool playback, std::int64_t mixerMode,
                                         std::uint64_t loopCount) {
  const auto opened = AudioFilePlayer::open(decoding_, pathOfUrl(url), passesOf(loopCount));
  const std::lock_guard lock(mutex_);
  const auto position = std::exchange(soughtPosition_, std::nullopt);
  if (!opened.player) return false;
  if (position) opened.player->seek(*position);
  if (const auto former = endLocked(LocalMixingStateStopped, LocalMixingReasonReplaced)) {
    files_->remove(former);
  }
  mode_ = mixerMode == LMRTCMixerModeLocalOnly || mixerMode == LMRTCMixerModeReplace ? mixerMode
                                                                                     : LMRTCMixerModeMix;
  isPlayedBack_ = playback;
  ticksToReport_ = kTicksPerReport;
  voice_ = std::make_shared<FileVoice>(
      opened.player, [weak = weak_from_this()](const FileVoice& voice, std::optional<Read> result) {
        if (const auto self = weak.lock()) self->voiceTicked(voice, result);
      });
  voice_->setReplacesMicrophone(mode_ == LMRTCMixerModeReplace);
  setGainsLocked();
  postStateLocked(LocalMixingStatePlaying, LocalMixingReasonStarted);
  files_->add(voice_);
  return true;
}

void LocalAudioMixer::pause() {
  const std::lock_guard lock(mutex_);
  if (!voice_ || voice_->isPaused()) return;
  voice_->setPaused(true);
  postStateLocked(LocalMixingStatePaused, LocalMixingReasonPaused);
}

void LocalAudioMixer::resume() {
  const std::lock_guard lock(mutex_);
  if (!voice_ || !voice_->isPaused()) return;
  voice_->setPaused(false);
  postStateLocked(LocalMixingStatePlaying, LocalMixingReasonResumed);
}

void LocalAudioMixer::stop() {
  std::shared_ptr<FileVoice> ended;
  {
    const std::lock_guard lock(mutex_);
    ended = endLocked(LocalMixingStateStopped, LocalMixingReasonStopped);
  }
  if (ended) files_->remove(ended);
}

void LocalAudioMixer::setMixingVolume(std::uint64_t volume) {
  const std::lock_guard lock(mutex_);
  mixingVolume_ = std::min(volume, kFullVolume);
  setGainsLocked();
}

void LocalAudioMixer::setPlayingVolume(std::uint64_t volume) {
  const std::lock_guard lock(mutex_);
  playingVolume_ = std::min(volume, kFullVolume);
  setGainsLocked();
}

void LocalAudioMixer::setPlayProgress(double progress) {
  if (std::isnan(progress)) return;
  const std::chrono::duration<double> seconds(std::clamp(progress, 0.0, kMostSeconds));
  const auto position = std::chrono::duration_cast<Microseconds>(seconds);
  const std::lock_guard lock(mutex_);
  soughtPosition_ = position;
  ticksToReport_ = kTicksPerReport;
  if (voice_) voice_->player().seek(position);
}

void LocalAudioMixer::voiceTicked(const FileVoice& voice, std::optional<Read> result) {
  const std::lock_guard lock(mutex_);
  if (voice_.get() != &voice) return;  // stopped or replaced in this very block
  if (!result) {
    if (!soughtPosition_ || --ticksToReport_ > 0) return;
    const Microseconds length = voice.player().duration();
    postProgressLocked(length > Microseconds(0) ? std::min(*soughtPosition_, length) : *soughtPosition_);
    return;
  }
  const bool goesOn = *result == Read::sound || *result == Read::underrun;
  if (!goesOn || --ticksToReport_ <= 0) postProgressLocked(voice.player().position());
  if (goesOn) return;
  const bool hasFailed = *result == Read::cutOff || *result == Read::failed;
  endLocked(hasFailed ? LocalMixingStateFailed : LocalMixingStateStopped, endReason(*result));
}

std::shared_ptr<FileVoice> LocalAudioMixer::endLocked(std::uint64_t state, std::uint64_t reason) {
  if (!voice_) return nullptr;
  postStateLocked(state, reason);
  soughtPosition_ = std::nullopt;
  return std::exchange(voice_, nullptr);
}

void LocalAudioMixer::setGainsLocked() {
  if (!voice_) return;
  voice_->setPublishGain(mode_ == LMRTCMixerModeLocalOnly ? 0 : gainOf(mixingVolume_));
  voice_->setPlaybackGain(isPlayedBack_ ? gainOf(playingVolume_) : 0);
}

void LocalAudioMixer::postStateLocked(std::uint64_t state, std::uint64_t reason) {
  sdk_->post([delegate = delegate_, state, reason] {
    if (const auto target = delegate.lock()) target->didAudioMixingStateChanged(state, reason);
  });
}

void LocalAudioMixer::postProgressLocked(Microseconds progress) {
  ticksToReport_ = kTicksPerReport;
  soughtPosition_ = std::nullopt;
  sdk_->post([delegate = delegate_, progress] {
    if (const auto target = delegate.lock())
      target->didReportPlayingProgress(static_cast<float>(secondsOf(progress)));
  });
}

}  // namespace lumo
