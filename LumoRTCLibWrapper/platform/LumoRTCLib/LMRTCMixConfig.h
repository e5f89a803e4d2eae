#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class LMRTCStream;

/// Where one video stream stands in the live mix, in pixels of the mixed picture.
struct LMRTCCustomLayout {
  std::shared_ptr<LMRTCStream> videoStream;
  std::int64_t x = 0;
  std::int64_t y = 0;
  std::int64_t width = 0;
  std::int64_t height = 0;
};

/// One audio stream that is part of the live mix.
struct LMRTCCustomMixAudio {
  std::shared_ptr<LMRTCStream> audioStream;
};

/// Encoding of the mixed video. A 0 leaves that quantity as it is.
struct LMRTCMixVideoLayout {
  std::int64_t fps = 0;      ///< frames per second
  std::int64_t width = 0;    ///< pixels
  std::int64_t height = 0;   ///< pixels
  std::int64_t bitrate = 0;  ///< kilobits per second
};

struct LMRTCMixVideoExtend {
  std::optional<std::int64_t> renderMode;  ///< LMRTCVideoRenderMode; absent: no change
};

/// The picture of the live mix.
class LMRTCMixVideoConfig {
 public:
  /// @param color  0xRRGGBB
  /// @return whether it is such a colour; if not, nothing changes
  bool setBackgroundColor(std::uint64_t color) {
    if (color > 0xFFFFFF) return false;
    backgroundColor_ = color;
    return true;
  }
  /// @param red,green,blue  0 to 255 each
  /// @return whether all are in range; if not, nothing changes
  bool setBackgroundColorWithRed(std::uint64_t red, std::uint64_t green, std::uint64_t blue) {
    if (red > 0xFF || green > 0xFF || blue > 0xFF) return false;
    return setBackgroundColor(red << 16 | green << 8 | blue);
  }
  /// 0xRRGGBB; absent: no change.
  std::optional<std::uint64_t> backgroundColor() const { return backgroundColor_; }

  LMRTCMixVideoExtend videoExtend;
  LMRTCMixVideoLayout videoLayout;      ///< the normal mixed stream
  LMRTCMixVideoLayout tinyVideoLayout;  ///< the small mixed stream

 private:
  std::optional<std::uint64_t> backgroundColor_;
};

struct LMRTCMixAudioConfig {
  std::int64_t bitrate = 0;  ///< kilobits per second; 0: no change
};

struct LMRTCMixMediaConfig {
  LMRTCMixVideoConfig videoConfig;
  LMRTCMixAudioConfig audioConfig;
};

/// A change of the live mix: only what is set is changed.
class LMRTCMixConfig {
 public:
  std::optional<std::int64_t> layoutMode;  ///< LMRTCMixLayoutMode
  std::optional<bool> customMode;          ///< whether the lists below count
  std::optional<std::vector<LMRTCCustomLayout>> customLayouts;
  std::optional<std::vector<LMRTCCustomMixAudio>> customMixAudios;
  LMRTCMixMediaConfig mediaConfig;
};
