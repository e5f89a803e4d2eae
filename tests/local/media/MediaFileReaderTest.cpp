#include <gtest/gtest.h>

#include <vector>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using test::clipColor;
using test::colorAt;

class MediaFileReaderTest : public testing::Test {
 protected:
  static std::unique_ptr<MediaFileReader> open(const std::string& path, MediaKind kind) {
    auto result = MediaFileReader::open(path, kind);
    EXPECT_EQ("", result.error);
    return std::move(result.reader);
  }

  const test::TempFolder folder_;
};

TEST_F(MediaFileReaderTest, GivesPicturesAndSoundWithTheirTimes) {
  const auto reader = open(
      writeClip(folder_, "clip.mkv", {.pictures = 12, .toneHz = 500, .toneSeconds = 1.2}), MediaKind::both);
  ASSERT_TRUE(reader->hasPicture() && reader->hasSound());
  EXPECT_NEAR(1.2, static_cast<double>(reader->duration().count()) / 1e6, 0.01);
  for (int round = 0; round < 2; ++round) {
    for (int number = 0; number < 12; ++number) {
      const auto picture = reader->nextPicture();
      ASSERT_TRUE(picture) << number;
      EXPECT_EQ(100ms * number, picture->timestamp);
      EXPECT_EQ(std::pair(64, 48), std::pair(picture->picture->width(), picture->picture->height()));
      EXPECT_EQ(clipColor(number), colorAt(*picture->picture, 63, 47));
    }
    EXPECT_FALSE(reader->nextPicture());
    std::vector<std::int16_t> samples;
    while (const auto sound = reader->nextSound()) {
      EXPECT_NEAR(static_cast<double>(samples.size()) / 96'000,
                  static_cast<double>(sound->timestamp.count()) / 1e6, 0.0001);
      samples.insert(samples.end(), sound->samples.begin(), sound->samples.end());
    }
    EXPECT_NEAR(1.2 * 48000, static_cast<double>(samples.size()) / 2, 2) << "nothing of the sound is lost";
    EXPECT_NEAR(0.5, test::toneLevel(samples, 500), 0.01);
    EXPECT_FALSE(reader->isDamaged());
    ASSERT_TRUE(reader->rewind());
  }
}

TEST_F(MediaFileReaderTest, SeeksToThePictureShownAndTheSoundFromThere) {
  for (const char* const name : {"clip.mkv", "clip.mov", "clip.avi"}) {
    SCOPED_TRACE(name);
    const auto reader = open(writeClip(folder_, name, {.pictures = 20}), MediaKind::picture);
    for (const auto& [goal, number] : {std::pair{1234ms, 12}, {0ms, 0}, {300ms, 3}, {1899ms, 18}}) {
      ASSERT_TRUE(reader->seek(goal));
      const auto picture = reader->nextPicture();
      ASSERT_TRUE(picture) << goal.count();
      EXPECT_EQ(100ms * number, picture->timestamp);
      EXPECT_EQ(clipColor(number), colorAt(*picture->picture, 9, 9));
      EXPECT_EQ(clipColor(number + 1), colorAt(*reader->nextPicture()->picture, 9, 9));
    }
    ASSERT_TRUE(reader->seek(1h));
    EXPECT_EQ(1900ms, reader->nextPicture()->timestamp);
    EXPECT_FALSE(reader->nextPicture());
  }
  const auto reader = open(writeClip(folder_, "tone.wav", {.pictures = 0, .toneHz = 300}), MediaKind::sound);
  ASSERT_TRUE(reader->seek(250ms));
  EXPECT_EQ(250ms, reader->nextSound()->timestamp);
}

TEST_F(MediaFileReaderTest, SeeksFilesWithoutTimestampsByReadingThemFromTheirStart) {
  const auto reader = open(writeClip(folder_, "clip.mjpeg", {.pictures = 20}), MediaKind::picture);
  for (const int goal : {12, 3, 0, 18}) {
    ASSERT_TRUE(reader->seek(40ms * goal + 39ms));
    for (const int number : {goal, goal + 1}) {
      const auto picture = reader->nextPicture();
      ASSERT_TRUE(picture) << number;
      EXPECT_EQ(40ms * number, picture->timestamp);  // 25 pictures a second, for want of anything better
      EXPECT_NEAR(16 + clipColor(number).y * 219 / 255, colorAt(*picture->picture, 9, 9).y, 3);
    }
  }
  EXPECT_FALSE(reader->nextPicture());
}

TEST_F(MediaFileReaderTest, TurnsPicturesUpright) {
  for (const auto& [rotation, width, height] : {std::tuple{90, 48, 64}, {180, 64, 48}, {270, 48, 64}}) {
    const auto path = writeClip(folder_, "turned.mov", {.pictures = 2, .rotation = rotation});
    const auto picture = open(path, MediaKind::picture)->nextPicture()->picture;
    EXPECT_EQ(std::pair(width, height), std::pair(picture->width(), picture->height())) << rotation;
  }
}

TEST_F(MediaFileReaderTest, SaysWhatIsWrongWithAFile) {
  const auto silent = writeClip(folder_, "silent.mov", {});
  const auto sound = writeClip(folder_, "sound.wav", {.pictures = 0, .toneHz = 300});
  const std::string whole = test::readFile(silent);
  const std::string notMedia = "is not a media file, or not a whole one";
  struct Case {
    std::string path;
    MediaKind kind;
    std::string problem;
  };
  const Case cases[] = {
      {folder_.path("missing.mp4"), MediaKind::both, "cannot be opened: No such file or directory"},
      {folder_.write("empty.mp4", ""), MediaKind::both, notMedia},
      {folder_.write("text.mp4", std::string(5000, 'x')), MediaKind::picture, notMedia},
      {folder_.write("cut.mov", whole.substr(0, whole.rfind("moov"))), MediaKind::picture, notMedia},
      {sound, MediaKind::picture, "has no picture"},
      {silent, MediaKind::sound, "has no sound"},
  };
  for (const Case& c : cases) {
    const auto result = MediaFileReader::open(c.path, c.kind);
    EXPECT_EQ(nullptr, result.reader) << c.path;
    EXPECT_EQ(c.path + " " + c.problem, result.error);
  }
}

TEST_F(MediaFileReaderTest, ReadsACutOffFileUpToTheCut) {
  for (const char* const name : {"cut.mkv", "cut.avi"}) {
    const std::string whole = test::readFile(writeClip(folder_, name, {.pictures = 20}));
    const auto reader = open(folder_.write(name, whole.substr(0, whole.size() / 2)), MediaKind::picture);
    int count = 0;
    for (auto picture = reader->nextPicture(); picture && !reader->isDamaged();
         picture = reader->nextPicture()) {
      EXPECT_EQ(clipColor(count++), colorAt(*picture->picture, 63, 0)) << name;
    }
    EXPECT_TRUE(count == 9 || count == 10) << name << " " << count;
    EXPECT_TRUE(reader->isDamaged()) << name;
  }
}

TEST_F(MediaFileReaderTest, SurvivesDamageAnywhere) {
  for (const char* const name : {"clip.mov", "clip.mkv"}) {
    const std::string whole = test::readFile(writeClip(folder_, name, {.toneHz = 440}));
    for (std::size_t seed = 0; seed < 40; ++seed) {
      std::string damaged = whole;
      for (std::size_t i = seed; i < damaged.size(); i += 97 + seed * 53)
        damaged[i] = static_cast<char>(seed * i);
      const auto opened = MediaFileReader::open(folder_.write(name, damaged), MediaKind::both);
      EXPECT_NE(opened.error.empty(), opened.reader == nullptr);
      if (!opened.reader) continue;
      for (int count = 0; opened.reader->nextPicture(); ++count) ASSERT_LT(count, 10'000);
      for (int count = 0; opened.reader->nextSound(); ++count) ASSERT_LT(count, 10'000);
    }
  }
}

}  // namespace
}  // namespace lumo
