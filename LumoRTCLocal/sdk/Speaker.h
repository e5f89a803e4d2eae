#pragma once

#include <functional>
#include <memory>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/server/AudioExchange.h"

namespace lumo {

/// What the local user hears: the mix of the streams that are played. While it listens to the audio exchange,
/// its sink gets a block every 10 ms, silence included.
class Speaker : public AudioTickListener {
 public:
  using Sink = std::function<void(const AudioBlock& block, Microseconds time)>;

  /// Any thread; an empty sink plays nowhere.
  void setSink(Sink sink);

  /// Audio runner only: adds to the block that is being mixed.
  void add(const AudioBlock& block) { mix_.add(block); }
  void audioTick(Microseconds time) override;

 private:
  Cell<std::shared_ptr<const Sink>> sink_;
  AudioMix mix_;  // audio runner only, as the block
  AudioBlock block_;
};

}  // namespace lumo
