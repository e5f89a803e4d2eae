#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// Hears of the mixed file's progress, on the mixer's thread.
class LMRTCAudioMixerAudioPlayDelegate {
 public:
  virtual ~LMRTCAudioMixerAudioPlayDelegate() = default;

  /// @param progress  in the unit of LMRTCAudioMixer::setPlayProgress
  virtual void didReportPlayingProgress(float progress) = 0;
  virtual void didAudioMixingStateChanged(std::uint64_t state, std::uint64_t reason) = 0;
};

/// Mixes one audio file into what the local user sends. Any thread.
class LMRTCAudioMixer {
 public:
  virtual ~LMRTCAudioMixer() = default;

  /// The mixer of the installed provider; null when no provider is installed.
  static std::shared_ptr<LMRTCAudioMixer> sharedInstance();
  /// Length of an audio file in seconds; 0 when it cannot be read.
  static double durationOfAudioFile(const std::string& url);

  /// Held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCAudioMixerAudioPlayDelegate> delegate) = 0;

  /// Starts playing a file, in place of any other.
  /// @param playback   whether it is played locally too
  /// @param mixerMode  LMRTCMixerMode
  /// @param loopCount  how many times the file plays
  /// @return whether the file can be played
  virtual bool startMixingWithURL(const std::string& url, bool playback, std::int64_t mixerMode,
                                  std::uint64_t loopCount) = 0;
  virtual void pause() = 0;
  virtual void resume() = 0;
  virtual void stop() = 0;

  /// Percent of the file's level that remote users hear.
  virtual void setMixingVolume(std::uint64_t volume) = 0;
  virtual std::uint64_t mixingVolume() const = 0;
  /// Percent of the file's level that is played locally.
  virtual void setPlayingVolume(std::uint64_t volume) = 0;
  virtual std::uint64_t playingVolume() const = 0;

  virtual void setPlayProgress(double progress) = 0;
};
