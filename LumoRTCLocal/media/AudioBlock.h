#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumo {

/// 10 ms of sound: 48 kHz, stereo, interleaved (left, right, left, ...).
struct AudioBlock {
  static constexpr int kSampleRate = 48000;
  static constexpr int kChannels = 2;
  static constexpr int kSamplesPerChannel = 480;
  static constexpr std::size_t kSamples = std::size_t{kChannels} * kSamplesPerChannel;

  std::array<std::int16_t, kSamples> samples{};
};

/// Where the sound of a stream comes from. Asked by one thread at a time.
class AudioSource {
 public:
  virtual ~AudioSource() = default;

  /// Whether there is a block to read at the moment; without one, nothing is sent.
  virtual bool hasSound() const { return true; }
  /// Writes the next 10 ms to `block`.
  virtual void read(AudioBlock& block) = 0;
};

/// A sine tone, the same on both channels.
class ToneSource : public AudioSource {
 public:
  /// @param frequencyHz  above 0, below 24000
  /// @param amplitude    of the wave, 0 to 1; 1 is full scale
  explicit ToneSource(double frequencyHz, double amplitude = 0.2);

  void read(AudioBlock& block) override;

 private:
  const double step_;       ///< radians from one sample to the next
  const double amplitude_;  ///< in sample values
  double phase_ = 0;        ///< radians, below a full turn
};

/// Sums blocks with 32 bits and saturates once, when the result is written, so that the order of the blocks
/// does not matter. Sums of up to 65,536 full-scale blocks at gain 1 cannot overflow.
class AudioMix {
 public:
  void clear() { sums_.fill(0); }
  /// @param gain  at least 0; 1 leaves the level as it is
  void add(const AudioBlock& block, double gain = 1.0);
  void add(const AudioMix& other);
  void write(AudioBlock& out) const;

 private:
  std::array<std::int32_t, AudioBlock::kSamples> sums_{};
};

}  // namespace lumo
