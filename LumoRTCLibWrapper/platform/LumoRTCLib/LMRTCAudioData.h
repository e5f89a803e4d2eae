#pragma once

#include <cstdint>
#include <functional>

/// A block of sound that the SDK lends for the duration of one callback: signed integer PCM, interleaved.
struct LMRTCAudioData {
  const std::uint8_t* bytes = nullptr;
  std::int32_t length = 0;  ///< bytes: samples * channels * bytesPerSample
  std::int32_t channels = 0;
  std::int32_t sampleRate = 0;  ///< samples per second
  std::int32_t bytesPerSample = 0;
  std::int32_t samples = 0;        ///< per channel
  std::uint64_t renderTimeMs = 0;  ///< on the SDK's monotonic clock, milliseconds
};

/// Takes each block of sound, on the SDK's audio thread.
using LMRTCAudioDataCallback = std::function<void(const LMRTCAudioData& data)>;
