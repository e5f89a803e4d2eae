#include "LumoRTCLocal/server/MixSettings.h"

#include <algorithm>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStream.h"
#include "LumoRTCLocal/media/VideoPresets.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

bool isInRange(std::int64_t value, std::int64_t least, std::int64_t greatest) {
  return value >= least && value <= greatest;
}

/// Takes over a value that is not 0.
/// @return whether it is 0 or in range
bool take(std::int64_t value, std::int32_t least, std::int32_t greatest, std::int32_t& target) {
  if (value == 0) return true;
  if (!isInRange(value, least, greatest)) return false;
  target = static_cast<std::int32_t>(value);
  return true;
}

bool takeSide(std::int64_t side, std::int32_t& target) {
  return side % 2 == 0 && take(side, MixSettings::kLeastSide, MixSettings::kGreatestSide, target);
}

std::int64_t applyLayout(const LMRTCMixVideoLayout& layout, VideoFormat& format, std::int32_t& bitrate) {
  if (!takeSide(layout.width, format.width) || !takeSide(layout.height, format.height))
    return LocalCodeMixSize;
  if (!take(layout.fps, 1, MixSettings::kMostFramesPerSecond, format.framesPerSecond))
    return LocalCodeMixFrameRate;
  if (!take(layout.bitrate, 1, MixSettings::kGreatestVideoBitrate, bitrate)) return LocalCodeMixBitrate;
  return LocalCodeSuccess;
}

std::int64_t applyPlacements(const std::vector<LMRTCCustomLayout>& layouts,
                             std::vector<MixPlacement>& placements) {
  constexpr std::int64_t kFarthest = MixSettings::kFarthestPlace;
  placements.clear();
  for (const LMRTCCustomLayout& layout : layouts) {
    if (!layout.videoStream) return LocalCodeUnknownStream;
    const bool isPlace = isInRange(layout.x, -kFarthest, kFarthest) &&
                         isInRange(layout.y, -kFarthest, kFarthest) &&
                         isInRange(layout.width, 2, kFarthest) && isInRange(layout.height, 2, kFarthest);
    if (!isPlace) return LocalCodeMixPlacement;
    const auto side = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
    placements.push_back({{layout.videoStream->userId(), layout.videoStream->tag()},
                          {side(layout.x), side(layout.y), side(layout.width), side(layout.height)}});
  }
  return LocalCodeSuccess;
}

std::int64_t applyPictures(const LMRTCMixConfig& config, MixSettings& settings) {
  const LMRTCMixVideoConfig& video = config.mediaConfig.videoConfig;
  if (config.layoutMode) {
    if (!isInRange(*config.layoutMode, LMRTCMixLayoutModeCustom, LMRTCMixLayoutModeAdaptive))
      return LocalCodeUnknownLayoutMode;
    settings.layoutMode = *config.layoutMode;
  }
  if (video.videoExtend.renderMode) {
    if (!isInRange(*video.videoExtend.renderMode, LMRTCVideoRenderModeCrop, LMRTCVideoRenderModeWhole))
      return LocalCodeUnknownRenderMode;
    settings.showWhole = *video.videoExtend.renderMode == LMRTCVideoRenderModeWhole;
  }
  if (const auto color = video.backgroundColor()) {
    const auto part = [&color](int shift) { return static_cast<std::uint8_t>(*color >> shift & 0xFF); };
    settings.background = yuvOf(part(16), part(8), part(0));
  }
  if (config.customLayouts) {
    if (const auto code = applyPlacements(*config.customLayouts, settings.placements)) return code;
  }
  if (const auto code = applyLayout(video.videoLayout, settings.picture, settings.videoBitrate)) return code;
  std::int32_t withoutEffect = 0;  // only the normal size is ever encoded
  return applyLayout(video.tinyVideoLayout, settings.tinyPicture, withoutEffect);
}

std::int64_t applySound(const LMRTCMixConfig& config, MixSettings& settings) {
  if (config.customMixAudios) {
    auto& audios = settings.audios.emplace();
    for (const LMRTCCustomMixAudio& audio : *config.customMixAudios) {
      if (!audio.audioStream) return LocalCodeUnknownStream;
      audios.push_back({audio.audioStream->userId(), audio.audioStream->tag()});
    }
  }
  const std::int64_t bitrate = config.mediaConfig.audioConfig.bitrate;
  return take(bitrate, 8, MixSettings::kGreatestAudioBitrate, settings.audioBitrate) ? LocalCodeSuccess
                                                                                     : LocalCodeMixBitrate;
}

}  // namespace

bool MixSettings::hears(const MixStream& stream) const {
  return !customMode || !audios || std::ranges::find(*audios, stream) != audios->end();
}

std::int64_t MixSettings::apply(const LMRTCMixConfig& config) {
  MixSettings changed = *this;
  changed.customMode = config.customMode.value_or(customMode);
  if (const auto code = applyPictures(config, changed)) return code;
  if (const auto code = applySound(config, changed)) return code;
  *this = std::move(changed);
  return LocalCodeSuccess;
}

std::int64_t MixSettings::applyCdn(std::int64_t preset, std::int64_t fpsValue) {
  const auto format = preset == -1 ? std::optional(cdnPicture) : presetFormat(preset, cdnPicture);
  const auto frameRate =
      fpsValue == -1 ? std::optional(cdnPicture.framesPerSecond) : presetFrameRate(fpsValue);
  if (!format || !frameRate) return LocalCodeCdnFormat;
  cdnPicture = {format->width, format->height, *frameRate};
  return LocalCodeSuccess;
}

}  // namespace lumo
