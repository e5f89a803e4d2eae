#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/sdk/Speaker.h"
#include "LumoRTCLocal/server/AudioExchange.h"

namespace lumo {

/// Lets the local user hear the own microphone: records it for a while, plays that on the speaker, and starts
/// again. It keeps the speaker going, in a room or not.
class EchoTest : public AudioTickListener {
 public:
  /// Allocates what it records into.
  /// @param seconds  from 1 to 60; what lies beyond counts as the nearer end
  EchoTest(std::shared_ptr<Speaker> speaker, double seconds);

  /// Audio runner only: records what the microphone gives in the next 10 ms, or plays instead.
  void take(const AudioBlock& block);
  void audioTick(Microseconds time) override { speaker_->audioTick(time); }

 private:
  const std::shared_ptr<Speaker> speaker_;
  // Audio runner only.
  std::vector<AudioBlock> recorded_;
  std::size_t next_ = 0;  ///< in what is recorded
  bool isPlaying_ = false;
  AudioMix mix_;
};

}  // namespace lumo
