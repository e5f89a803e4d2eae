#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/AudioFilePlayer.h"
#include "LumoRTCLocal/sdk/Speaker.h"
#include "LumoRTCLocal/server/AudioExchange.h"

namespace lumo {

/// One file that plays, and how loud. Any thread, except for the block of its own publication: that is the
/// source of an audio publication and is taken, in each 10 ms, after the playback has read the file.
class FileVoice : public AudioSource {
 public:
  /// Told after every 10 ms, on the audio runner: what the player gave, or nothing while it is paused.
  using Listener = std::function<void(FileVoice& voice, std::optional<AudioFilePlayer::Read> result)>;

  FileVoice(std::shared_ptr<AudioFilePlayer> player, Listener listener)
      : player_(std::move(player)), listener_(std::move(listener)) {}

  AudioFilePlayer& player() const { return *player_; }

  /// 1 is the file's own level; 0 does not play it there.
  void setPublishGain(double gain) { publishGain_.store(gain, std::memory_order_relaxed); }
  void setPlaybackGain(double gain) { playbackGain_.store(gain, std::memory_order_relaxed); }
  /// Also keeps each block for a publication of its own, at the file's level.
  void setHasPublication(bool has) { hasPublication_.store(has, std::memory_order_relaxed); }
  /// While it plays, the microphone is not sent.
  void setReplacesMicrophone(bool replaces) {
    replacesMicrophone_.store(replaces, std::memory_order_relaxed);
  }
  void setPaused(bool paused) { paused_.store(paused, std::memory_order_relaxed); }
  bool isPaused() const { return paused_.load(std::memory_order_relaxed); }

  bool hasSound() const override { return hasBlock_; }
  void read(AudioBlock& block) override {
    block = block_;
    hasBlock_ = false;
  }

 private:
  friend class FilePlayback;

  void keep(const AudioBlock& block) {
    block_ = block;
    hasBlock_ = true;
  }

  const std::shared_ptr<AudioFilePlayer> player_;
  const Listener listener_;
  std::atomic<double> publishGain_{1};
  std::atomic<double> playbackGain_{1};
  std::atomic<bool> hasPublication_{false};
  std::atomic<bool> replacesMicrophone_{false};
  std::atomic<bool> paused_{false};

  // The audio runner alone.
  AudioBlock block_;
  bool hasBlock_ = false;  ///< the block is of this tick and has not been read
};

/// Plays files into the speaker and into what the local user sends. While there are any it keeps the audio
/// clock and the speaker going, in a room or not, so that a file moves on while nobody hears it.
class FilePlayback : public AudioTickListener, public std::enable_shared_from_this<FilePlayback> {
 public:
  FilePlayback(std::weak_ptr<AudioExchange> exchange, std::shared_ptr<Speaker> speaker)
      : exchange_(std::move(exchange)), speaker_(std::move(speaker)) {}

  /// Any thread. A voice that ends is removed by itself.
  void add(std::shared_ptr<FileVoice> voice);
  void remove(const std::shared_ptr<FileVoice>& voice);

  /// Audio runner only: turns what the microphone gives in the 10 ms of `time` into what is sent.
  /// @return whether a file is sent
  bool publish(AudioBlock& block, Microseconds time);

  void audioTickBegins(Microseconds time) override;
  void audioTick(Microseconds time) override { speaker_->audioTick(time); }

 private:
  /// @return whether it goes on
  bool play(FileVoice& voice);

  const std::weak_ptr<AudioExchange> exchange_;
  const std::shared_ptr<Speaker> speaker_;

  std::mutex mutex_;  ///< guards the list, and that the exchange knows this while the list has any
  std::vector<std::shared_ptr<FileVoice>> voices_;

  // The audio runner alone.
  std::vector<std::shared_ptr<FileVoice>> current_;
  AudioBlock block_;
  AudioMix published_;
  AudioMix playedBack_;
  Microseconds time_{-1};  // of the blocks above
  bool isPublishing_ = false;
  bool isPlayedBack_ = false;
  bool replacesMicrophone_ = false;
};

}  // namespace lumo
