#pragma once

#include <cstdint>
#include <optional>

#include "LumoRTCLocal/media/VideoFormat.h"

class LMRTCVideoStreamConfig;

namespace lumo {

/// The size of a preset, 0 (144 x 176) to 16 (1080 x 1920), with the frame rate of `base`; nothing for other
/// numbers.
std::optional<VideoFormat> presetFormat(std::int64_t preset, const VideoFormat& base);

/// 10, 15, 24 or 30 frames per second for the values 0 to 3; nothing for other numbers.
std::optional<std::int32_t> presetFrameRate(std::int64_t value);

/// `present`, with the size and the frame rate that `config` sets.
VideoFormat configuredFormat(const VideoFormat& present, const LMRTCVideoStreamConfig& config);

/// The small stream that goes out beside a stream of format `normal` when nothing else is configured: its
/// shorter side is at most 180 pixels, in the same proportions, at 10 frames per second (180 x 240 for 480 x
/// 640).
VideoFormat defaultTinyFormat(const VideoFormat& normal);

}  // namespace lumo
