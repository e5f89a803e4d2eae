#include <utility>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioEffectManager.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

// Audio effects and audio mixing.

namespace {

using Delegate = LMRTCIWEngineDelegate;

constexpr std::uint64_t kFullVolume = 100;
constexpr std::uint64_t kStateStopped = 2;
constexpr std::uint64_t kReasonEndOfFile = 4;

}  // namespace

// Effects

std::int64_t LMRTCIWEngine::createAudioEffect(const OptionalText& url, std::int64_t effectId) {
  const CallFrame frame(__func__, "url:%@,effectId:%@", {url, effectId});
  if (!joinedRoom()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  if (!url) return frame.fail(LMRTCWrapperCodeParameterError, "url is nil");
  if (!effectSoundIdDict_.insert(effectId, *url)) return LMRTCWrapperCodeParameterError;

  lumo::MainQueue::async([self = shared_from_this(), frame, url, effectId] {
    const auto callback = self->listener(&Delegate::onAudioEffectCreated);
    frame.result(LMRTCWrapperCodeSuccess, "callback:%@, code:%@, url:%@,effectId:%@",
                 {"onAudioEffectCreated", LMRTCWrapperCodeSuccess, url, effectId});
    if (callback) (*callback)(effectId, LMRTCWrapperCodeSuccess, "");
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::releaseAudioEffect(std::int64_t effectId) {
  const CallFrame frame(__func__, "effectId:%@", {effectId});
  if (!joinedRoom()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  return effectSoundIdDict_.erase(effectId) ? LMRTCWrapperCodeSuccess : LMRTCWrapperCodeParameterError;
}

std::int64_t LMRTCIWEngine::playAudioEffect(std::int64_t effectId, std::uint64_t volume, std::int64_t loop) {
  const CallFrame frame(__func__, "effectId:%@,volume:%@,loop:%@,", {effectId, volume, loop});
  const auto effect = audioEffect(frame, effectId, "effectSoundIdDict error");
  if (!effect.manager) return effect.code;
  effect.manager->playEffect(effectId, effect.url, loop, true);
  effect.manager->setVolumeOfEffect(effectId, volume);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::pauseAudioEffect(std::int64_t effectId) {
  const CallFrame frame(__func__, "effectId:%@", {effectId});
  const auto effect = audioEffect(frame, effectId, "effectSoundIdDict error");
  if (!effect.manager) return effect.code;
  effect.manager->pauseEffect(effectId);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::resumeAudioEffect(std::int64_t effectId) {
  const CallFrame frame(__func__, "effectId:%@", {effectId});
  const auto effect = audioEffect(frame, effectId, "effectSoundIdDict error");
  if (!effect.manager) return effect.code;
  effect.manager->resumeEffect(effectId);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::stopAudioEffect(std::int64_t effectId) {
  const CallFrame frame(__func__);
  const auto effect = audioEffect(frame, effectId, "effectSoundIdDict error");
  if (!effect.manager) return effect.code;
  effect.manager->stopEffect(effectId);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::adjustAudioEffect(std::int64_t effectId, std::uint64_t volume) {
  const CallFrame frame(__func__, "effectId:%@,volume:%@", {effectId, volume});
  // The text is kept for hosts; the volume is not checked.
  const auto effect = audioEffect(frame, effectId, "effectSoundIdDict error or volume < 0");
  if (!effect.manager) return effect.code;
  effect.manager->setVolumeOfEffect(effectId, volume);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::getAudioEffectVolume(std::int64_t effectId) {
  const CallFrame frame(__func__, "effectId:%@", {effectId});
  const auto effect = audioEffect(frame, effectId, "effectSoundIdDict error");
  return effect.manager ? effect.manager->getVolumeOfEffectId(effectId) : effect.code;
}

std::int64_t LMRTCIWEngine::pauseAllAudioEffects() {
  const CallFrame frame(__func__);
  const auto effects = audioEffects(frame);
  if (effects.manager) effects.manager->pauseAllEffects();
  return effects.code;
}

std::int64_t LMRTCIWEngine::resumeAllAudioEffects() {
  const CallFrame frame(__func__);
  const auto effects = audioEffects(frame);
  if (effects.manager) effects.manager->resumeAllEffects();
  return effects.code;
}

std::int64_t LMRTCIWEngine::stopAllAudioEffects() {
  const CallFrame frame(__func__);
  const auto effects = audioEffects(frame);
  if (effects.manager) effects.manager->stopAllEffects();
  return effects.code;
}

std::int64_t LMRTCIWEngine::adjustAllAudioEffectsVolume(std::uint64_t volume) {
  const CallFrame frame(__func__, "volume:%@", {volume});
  const auto effects = audioEffects(frame);
  if (effects.manager) effects.manager->setEffectsVolume(volume);
  return effects.code;
}

std::int64_t LMRTCIWEngine::getAllAudioEffectsVolume() {
  const CallFrame frame(__func__);
  const auto effects = audioEffects(frame);
  return effects.manager ? effects.manager->getEffectsVolume() : effects.code;
}

LMRTCIWEngineBase::AudioEffect LMRTCIWEngineBase::audioEffects(const CallFrame& frame) const {
  if (!joinedRoom()) {
    return {frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil"), nullptr, {}};
  }
  const auto engine = rtcEngine();
  return {LMRTCWrapperCodeSuccess, engine ? engine->audioEffectManager() : nullptr, {}};
}

LMRTCIWEngineBase::AudioEffect LMRTCIWEngineBase::audioEffect(const CallFrame& frame, std::int64_t effectId,
                                                              const char* missing) const {
  auto effect = audioEffects(frame);
  if (effect.code != LMRTCWrapperCodeSuccess) return effect;
  auto url = effectSoundIdDict_.find(effectId);
  if (!url) return {frame.fail(LMRTCWrapperCodeParameterError, missing), nullptr, {}};
  effect.url = std::move(*url);
  return effect;
}

// Mixing

std::int64_t LMRTCIWEngine::startAudioMixing(const OptionalText& url, std::int64_t mode, bool playback,
                                             std::uint64_t loop) {
  const CallFrame frame(__func__, "url:%@,mode:%@,playback:%@,loop:%@", {url, mode, playback, loop});
  if (!startMixer(url, mode, playback, loop, std::nullopt)) return LMRTCWrapperCodeParameterError;
  lumo::MainQueue::async([self = shared_from_this(), frame, url, mode, playback, loop] {
    const auto callback = self->listener(&Delegate::onAudioMixingStarted);
    frame.result(LMRTCWrapperCodeSuccess, "callback:%@, code:%@, url:%@,mode:%@,playback:%@,loop:%@",
                 {"onAudioMixingStarted", LMRTCWrapperCodeSuccess, url, mode, playback, loop});
    if (callback) (*callback)();
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::startAudioMixing(const OptionalText& url, std::int64_t mode, bool playback,
                                             std::uint64_t loop, double position) {
  const CallFrame frame(__func__, "url:%@,mode:%@,playback:%@,loop:%@,position:%@",
                        {url, mode, playback, loop, position});
  if (!startMixer(url, mode, playback, loop, position)) return LMRTCWrapperCodeParameterError;
  lumo::MainQueue::async([self = shared_from_this(), frame, url, mode, playback, loop, position] {
    const auto callback = self->listener(&Delegate::onAudioMixingStarted);
    frame.result(LMRTCWrapperCodeSuccess,
                 "callback:%@, code:%@, url:%@,mode:%@,playback:%@,loop:%@,position:%@",
                 {"onAudioMixingStarted", LMRTCWrapperCodeSuccess, url, mode, playback, loop, position});
    if (callback) (*callback)();
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::pauseAudioMixing() {
  const CallFrame frame(__func__);
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) mixer->pause();
  postMixingResult(frame, "onAudioMixingPaused", &Delegate::onAudioMixingPaused);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::resumeAudioMixing() {
  const CallFrame frame(__func__);
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) mixer->resume();
  postMixingResult(frame, "onAudioMixingResume", &Delegate::onAudioMixingResume);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::stopAudioMixing() {
  const CallFrame frame(__func__);
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) mixer->stop();
  postMixingResult(frame, "onAudioMixingStopped", &Delegate::onAudioMixingStopped);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::adjustAudioMixingVolume(std::uint64_t volume) {
  const CallFrame frame(__func__, "volume:%@", {volume});
  if (volume > kFullVolume) return frame.fail(LMRTCWrapperCodeParameterError, "volume > 100");
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) {
    mixer->setMixingVolume(volume);
    mixer->setPlayingVolume(volume);
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::adjustAudioMixingPlaybackVolume(std::uint64_t volume) {
  const CallFrame frame(__func__, "volume:%@", {volume});
  if (volume > kFullVolume) return frame.fail(LMRTCWrapperCodeParameterError, "volume > 100");
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) mixer->setPlayingVolume(volume);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::getAudioMixingPlaybackVolume() {
  const CallFrame frame(__func__);
  const auto mixer = LMRTCAudioMixer::sharedInstance();
  return mixer ? static_cast<std::int64_t>(mixer->playingVolume()) : 0;
}

std::int64_t LMRTCIWEngine::adjustAudioMixingPublishVolume(std::uint64_t volume) {
  const CallFrame frame(__func__, "volume:%@", {volume});
  if (volume > kFullVolume) return frame.fail(LMRTCWrapperCodeParameterError, "volume > 100");
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) mixer->setMixingVolume(volume);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::getAudioMixingPublishVolume() {
  const CallFrame frame(__func__);
  const auto mixer = LMRTCAudioMixer::sharedInstance();
  return mixer ? static_cast<std::int64_t>(mixer->mixingVolume()) : 0;
}

std::int64_t LMRTCIWEngine::setAudioMixingPosition(double position) {
  const CallFrame frame(__func__, "position:%@", {position});
  if (const auto mixer = LMRTCAudioMixer::sharedInstance()) mixer->setPlayProgress(position);
  return LMRTCWrapperCodeSuccess;
}

double LMRTCIWEngine::getAudioMixingPosition() {
  const CallFrame frame(__func__);
  return audioMixPlayProgress();
}

std::int64_t LMRTCIWEngine::getAudioMixingDuration() {
  const CallFrame frame(__func__);
  const auto url = audioMixingFileUrl();
  if (!url) return LMRTCWrapperCodeParameterError;
  return static_cast<std::int64_t>(LMRTCAudioMixer::durationOfAudioFile(*url));
}

void LMRTCIWEngine::didReportPlayingProgress(float progress) {
  const auto pass = callbackGate_.enter();
  if (!pass) return;
  setAudioMixPlayProgress(static_cast<double>(progress));
  notify(&Delegate::onAudioMixingProgressReported, progress);
}

void LMRTCIWEngine::didAudioMixingStateChanged(std::uint64_t state, std::uint64_t reason) {
  lumo::Console::write("LMRTCIWEngine didAudioMixingStateChanged: %@ , reason: %@", {state, reason});
  if (state != kStateStopped || reason != kReasonEndOfFile) return;
  announce(&Delegate::onAudioMixingFinished, "onAudioMixingFinished", "");
}

bool LMRTCIWEngine::startMixer(const OptionalText& url, std::int64_t mode, bool playback, std::uint64_t loop,
                               std::optional<double> position) {
  setAudioMixingFileUrl(url);
  const auto mixer = LMRTCAudioMixer::sharedInstance();
  if (!mixer) return false;
  mixer->setDelegate(asDelegate<LMRTCAudioMixerAudioPlayDelegate>());
  if (position) setAudioMixingPosition(*position);
  return mixer->startMixingWithURL(url.value_or(""), playback, LMRTCIWConverter::toLMRTCMixerMode(mode),
                                   loop);
}

void LMRTCIWEngine::postMixingResult(const CallFrame& frame, const char* name,
                                     std::function<void()> LMRTCIWEngineDelegate::*field) {
  lumo::MainQueue::async([self = shared_from_this(), frame, name, field] {
    frame.result(LMRTCWrapperCodeSuccess, "callback:%@, code:%@, ", {name, LMRTCWrapperCodeSuccess});
    self->notify(field);
  });
}
