#pragma once

#include <cstdint>

/// One block of sound for an observer: signed integer PCM, interleaved.
struct LMRTCIWAudioFrame {
  const std::uint8_t* bytes = nullptr;  ///< lent for the duration of the callback
  std::int32_t length = 0;              ///< bytes
  std::int32_t channels = 0;
  std::int32_t sampleRate = 0;  ///< samples per second
  std::int32_t bytesPerSample = 0;
  std::int32_t samples = 0;        ///< per channel
  std::uint64_t renderTimeMs = 0;  ///< on the SDK's clock; 0 in mixed sound, where it is not known
};
