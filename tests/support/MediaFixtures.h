#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "LumoRTCLocal/media/TestPicture.h"

namespace lumo::test {

/// A folder of its own for the files of one test, removed at the end.
class TempFolder {
 public:
  TempFolder() : folder_(mkdtemp((testing::TempDir() + "lumo-media-XXXXXX").data())) {}
  TempFolder(const TempFolder&) = delete;
  ~TempFolder() { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  /// Writes a file and returns its path.
  std::string write(const std::string& name, const std::string& contents) const;

 private:
  std::filesystem::path folder_;
};

std::string readFile(const std::string& path);

/// A media file to make, with H.264 pictures and uncompressed sound.
struct Clip {
  std::int32_t pictures = 10;  ///< ten a second, each 64 x 48 in the `clipColor` of its number; 0: none
  double toneHz = 0;           ///< 0: no sound stream
  double toneSeconds = 1;      ///< at half of full scale
};

YuvColor clipColor(std::int32_t picture);

/// Makes a file in the folder, whose extension chooses the container, and returns its path. Its sound, as
/// that of all files here, is 44.1 kHz stereo.
std::string writeClip(const TempFolder& folder, const std::string& name, const Clip& clip);

/// A stretch of one sine tone.
struct Tone {
  double frequencyHz = 0;
  double seconds = 0;
};

/// Makes a sound file, the tones one after another at an amplitude of 0.25, and returns its path. The
/// extension chooses container and codec: wav, flac, mp3 or m4a (AAC).
std::string writeTones(const TempFolder& folder, const std::string& name, const std::vector<Tone>& tones);

/// A picture of one colour.
std::shared_ptr<LumoRTCI420Buffer> solid(std::int32_t width, std::int32_t height, const YuvColor& color);

/// The colour of one pixel.
YuvColor colorAt(const LumoRTCI420Buffer& picture, std::int32_t x, std::int32_t y);

/// The amplitude, of full scale, of one frequency in the left channel of 48 kHz stereo sound.
double toneLevel(std::span<const std::int16_t> samples, double frequencyHz);

}  // namespace lumo::test
