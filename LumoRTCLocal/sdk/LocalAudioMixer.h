#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/AudioFilePlayer.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

/// Plays one file into the local user's sound, with or without a room and a session. Its numbers are those of
/// LMRTCMixerMode, LocalMixingState and LocalMixingReason; positions and progress are seconds from the start
/// of the file. Progress is reported every 200 ms while the file plays, once 200 ms after a seek in a paused
/// file, and at the end of the file right before the state. Reports and states come on the SDK's thread, in
/// the order of what they tell.
class LocalAudioMixer : public LMRTCAudioMixer, public std::enable_shared_from_this<LocalAudioMixer> {
 public:
  /// @param sdk       reports
  /// @param decoding  decodes the file
  LocalAudioMixer(std::shared_ptr<Runner> sdk, std::shared_ptr<Runner> decoding,
                  std::shared_ptr<FilePlayback> files);

  void setDelegate(std::weak_ptr<LMRTCAudioMixerAudioPlayDelegate> delegate) override;
  /// A file that cannot be played changes nothing: the one that plays goes on.
  /// @param mixerMode  LMRTCMixerMode; any other number means LMRTCMixerModeMix
  /// @param loopCount  0: endlessly
  bool startMixingWithURL(const std::string& url, bool playback, std::int64_t mixerMode,
                          std::uint64_t loopCount) override;
  void pause() override;
  void resume() override;
  void stop() override;

  /// 0 to 100; more counts as 100. Both volumes stay for the next file.
  void setMixingVolume(std::uint64_t volume) override;
  std::uint64_t mixingVolume() const override { return mixingVolume_; }
  void setPlayingVolume(std::uint64_t volume) override;
  std::uint64_t playingVolume() const override { return playingVolume_; }

  /// Moves the file that plays. A file that starts in its place before the next report of progress begins at
  /// this position; so does the next one when none plays.
  /// @param progress  seconds; below 0 means the start, what is not a number does nothing
  void setPlayProgress(double progress) override;

 private:
  void voiceTicked(const FileVoice& voice, std::optional<AudioFilePlayer::Read> result);
  /// Forgets the voice; under the lock.
  std::shared_ptr<FileVoice> endLocked(std::uint64_t state, std::uint64_t reason);
  void setGainsLocked();
  void postStateLocked(std::uint64_t state, std::uint64_t reason);
  void postProgressLocked(Microseconds progress);

  const std::shared_ptr<Runner> sdk_;
  const std::shared_ptr<Runner> decoding_;
  const std::shared_ptr<FilePlayback> files_;
  std::atomic<std::uint64_t> mixingVolume_{100};
  std::atomic<std::uint64_t> playingVolume_{100};

  /// Guards what follows; reports are posted under it, so that their order is that of the changes.
  std::mutex mutex_;
  std::weak_ptr<LMRTCAudioMixerAudioPlayDelegate> delegate_;
  std::shared_ptr<FileVoice> voice_;  // null: no file plays
  std::int64_t mode_ = LMRTCMixerModeMix;
  bool isPlayedBack_ = true;
  std::int32_t ticksToReport_ = 0;
  std::optional<Microseconds> soughtPosition_;
};

}  // namespace lumo
