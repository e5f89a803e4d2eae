#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLocal/media/AudioBlock.h"

namespace lumo {

/// The machine's default sound output; on a machine without one, and where it cannot be opened, everything
/// that is played is dropped. Closes on destruction.
class SoundOutput {
 public:
  /// Opens the output, which may take a moment. Any thread.
  static std::shared_ptr<SoundOutput> open();

  ~SoundOutput();
  SoundOutput(const SoundOutput&) = delete;
  SoundOutput& operator=(const SoundOutput&) = delete;

  /// Plays `block` after those before it and returns at once. The output is 30 to 100 ms late; where its
  /// clock is slower than the caller's, single blocks are left out. One thread at a time.
  void play(const AudioBlock& block);

 private:
  SoundOutput();

  bool hasAudio_ = false;
  std::uint32_t device_ = 0;  // SDL's number of it; 0: none
};

}  // namespace lumo
