#pragma once

#include <mutex>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"

/// Listens for tones in a flow of sound. Any thread.
class LevelMeter {
 public:
  /// @param frequenciesHz  multiples of 10
  explicit LevelMeter(const std::vector<double>& frequenciesHz);

  void add(const lumo::AudioBlock& block);

  struct Level {
    double frequencyHz = 0;
    double highest = 0;  ///< amplitude of the tone in its loudest tenth of a second, of full scale
  };
  std::vector<Level> levels() const;

 private:
  /// Goertzel's algorithm, one state per frequency.
  struct Tone {
    Level level;
    double coefficient = 0;
    double last = 0;
    double beforeLast = 0;
  };

  static void finish(Tone& tone);

  mutable std::mutex mutex_;  // guards the rest
  std::vector<Tone> tones_;
  int blocks_ = 0;  // of the present tenth of a second
};
