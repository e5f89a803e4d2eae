#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/SoundOutput.h"
#include "LumoRTCLocal/media/WavWriter.h"
#include "LumoRTCLocal/sdk/AudioTap.h"
#include "LumoRTCLocal/server/AudioExchange.h"

namespace lumo {

/// What the local user receives and hears: the mix of the streams and files that are played. While it listens
/// to the audio exchange, its tap and its sink get a block every 10 ms, silence included.
class Speaker : public AudioTickListener {
 public:
  using Sink = std::function<void(const AudioBlock& block, Microseconds time)>;

  /// Any thread; an empty sink plays nowhere.
  void setSink(Sink sink);
  /// Where else it is played and written; null for nowhere. Any thread.
  void setOutput(std::shared_ptr<SoundOutput> output) { output_.set(std::move(output)); }
  void setRecorder(std::shared_ptr<WavWriter> recorder) { recorder_.set(std::move(recorder)); }
  /// A speaker that is off gives its sink nothing. Any thread.
  void setEnabled(bool enabled) { enabled_.store(enabled, std::memory_order_relaxed); }
  /// While received sound is muted, the streams bring nothing. Any thread.
  void muteReceived(bool muted) { muted_.store(muted, std::memory_order_relaxed); }
  bool isReceivedMuted() const { return muted_.load(std::memory_order_relaxed); }

  /// Listens to the mix of everything that is received, whether or not it is played.
  AudioTap& receivedTap() { return receivedTap_; }

  /// Audio runner only: adds something received to the block that is being mixed.
  void add(const AudioBlock& block) { mix_.add(block); }
  /// Audio runner only: adds something that only the local user hears.
  void addLocal(const AudioMix& mix);
  /// Plays the block. More calls for the same time do nothing, as several may keep the speaker going.
  void audioTick(Microseconds time) override;

 private:
  std::atomic<bool> enabled_{true};
  std::atomic<bool> muted_{false};
  AudioTap receivedTap_;
  Cell<std::shared_ptr<const Sink>> sink_;
  Cell<std::shared_ptr<SoundOutput>> output_;
  Cell<std::shared_ptr<WavWriter>> recorder_;
  AudioMix mix_;  // audio runner only, as the block
  AudioMix local_;
  AudioBlock block_;
  bool hasLocal_ = false;
  Microseconds playedTime_{-1};
};

}  // namespace lumo
