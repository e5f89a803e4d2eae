#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "LumoRTCLocal/media/TestPicture.h"

namespace lumo {

/// For the messages of failed tests.
void PrintTo(const YuvColor& color, std::ostream* out);

namespace test {

/// A folder of its own for the files of one test, removed at the end.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  /// Writes a file and returns its path.
  std::string write(const std::string& name, const std::string& contents) const;

 private:
  std::filesystem::path folder_;
};

std::string readFile(const std::string& path);

/// A media file to make, with uncompressed sound and pictures that are compressed without loss;
/// those of .mjpeg files are JPEG pictures in the full range.
struct Clip {
  std::int32_t framesPerSecond = 10;
  std::int32_t pictures = 10;  ///< 0: no picture stream; each is 64 x 48 in the `clipColor` of its number
  std::int32_t rotation = 0;   ///< degrees clockwise that a player has to turn the pictures; in .mov files
  double toneHz = 0;           ///< 0: no sound stream
  double toneSeconds = 1;      ///< written as 44.1 kHz mono at half of full scale
};

YuvColor clipColor(std::int32_t picture);

/// Makes a file in the folder, whose extension chooses the container, and returns its path.
std::string writeClip(const TempFolder& folder, const std::string& name, const Clip& clip);

/// A stretch of one sine tone.
struct Tone {
  double frequencyHz = 0;
  double seconds = 0;
};

/// Makes a sound file in 48 kHz stereo, the tones one after another at an amplitude of 0.25, and returns its
/// path. The extension chooses container and codec: wav, flac, mp3 or m4a (AAC).
std::string writeTones(const TempFolder& folder, const std::string& name, const std::vector<Tone>& tones);

/// A picture of one colour.
std::shared_ptr<LumoRTCI420Buffer> solid(std::int32_t width, std::int32_t height, const YuvColor& color);

/// The colour of one pixel.
YuvColor colorAt(const LumoRTCI420Buffer& picture, std::int32_t x, std::int32_t y);

/// The amplitude, of full scale, of one frequency in the left channel of 48 kHz stereo sound.
double toneLevel(std::span<const std::int16_t> samples, double frequencyHz);

}  // namespace test
}  // namespace lumo
