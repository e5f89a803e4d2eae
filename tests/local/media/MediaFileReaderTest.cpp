#include <gtest/gtest.h>

#include <tuple>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace lumo;
using namespace std::chrono_literals;

struct MediaFileReaderTest : testing::Test {
  static std::unique_ptr<MediaFileReader> open(const std::string& path) {
    return MediaFileReader::open(path, MediaKind::picture).reader;
  }
  const test::TempFolder folder_;
};

TEST_F(MediaFileReaderTest, SeeksToThePictureShownAndTurnsItUpright) {
  std::string clip = test::readFile(writeClip(folder_, "clip.mov", {.pictures = 20}));
  const std::size_t matrix = clip.find("tkhd") + 44;
  clip.replace(matrix, 20, std::string("\0\0\0\0\0\1\0\0\0\0\0\0\xff\xff\0\0\0\0\0\0", 20));  // 90 degrees
  const auto reader = open(folder_.write("turned.mov", clip));
  for (const auto& [goal, number] : {std::pair{1234ms, 12}, {0ms, 0}, {300ms, 3}, {1h, 19}}) {
    ASSERT_TRUE(reader->seek(goal));
    const auto found = reader->nextPicture();
    ASSERT_TRUE(found) << goal.count();
    EXPECT_EQ(100ms * number, found->timestamp);
    EXPECT_NEAR(test::clipColor(number).y, test::colorAt(*found->picture, 9, 9).y, 2);
    EXPECT_EQ(std::pair(48, 64), std::pair(found->picture->width(), found->picture->height()));
  }
  EXPECT_FALSE(reader->nextPicture());
}

TEST_F(MediaFileReaderTest, ConvertsColoursOfTheFullRange) {
  for (const auto& [kind, chroma] : {std::pair{"444", 16}, {"420jpeg", 4}}) {
    const std::string header = std::string("YUV4MPEG2 W4 H4 F10:1 C") + kind + " XCOLORRANGE=FULL\nFRAME\n";
    const auto size = static_cast<std::size_t>(chroma);
    const std::string planes =
        std::string(16, '\x28') + std::string(size, '\x5A') + std::string(size, '\xC8');
    const auto file = folder_.write("full.y4m", header + planes);
    const YuvColor color = test::colorAt(*open(file)->nextPicture()->picture, 2, 2);
    EXPECT_NEAR(16 + 40 * 219 / 255, color.y, 1) << kind;
    EXPECT_NEAR(128 + (200 - 128) * 224 / 255, color.v, 1) << kind;
  }
}

TEST_F(MediaFileReaderTest, SaysWhatIsWrongWithAFile) {
  const auto silent = writeClip(folder_, "silent.mov", {});
  const auto sound = writeClip(folder_, "sound.wav", {.pictures = 0, .toneHz = 300});
  const std::string whole = test::readFile(silent);
  const std::tuple<std::string, MediaKind, std::string> cases[] = {
      {folder_.path("missing.mp4"), MediaKind::both, "cannot be opened: No such file or directory"},
      {folder_.write("cut.mov", whole.substr(0, whole.rfind("moov"))), MediaKind::picture,
       "is not a media file, or not a whole one"},
      {sound, MediaKind::picture, "has no picture"},
      {silent, MediaKind::sound, "has no sound"},
  };
  for (const auto& [path, kind, problem] : cases)
    EXPECT_EQ(path + " " + problem, MediaFileReader::open(path, kind).error);
}

}  // namespace
