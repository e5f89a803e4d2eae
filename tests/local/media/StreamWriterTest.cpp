#include <gtest/gtest.h>

#include <filesystem>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "LumoRTCLocal/media/StreamWriter.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using test::colorAt;
using test::solid;

constexpr YuvColor kColor{120, 60, 180};

struct Report {
  std::vector<std::string> opened;
  std::vector<std::string> failed;

  StreamWriter::Events events() {
    return {[this](const std::string& error) { opened.push_back(error); },
            [this](const std::string& error) { failed.push_back(error); }};
  }
};

/// Writes a second and a half of a 440 Hz tone and pictures at 20 per second, of `width` x 96.
void writeStream(Timeline& timeline, StreamWriter& writer, std::int32_t width) {
  ToneSource tone(440, 0.5);
  AudioBlock block;
  const auto picture = solid(width, 96, kColor);
  for (int i = 0; i < 150; ++i) {
    tone.read(block);
    if (i % 5 == 0) writer.writePicture(picture, timeline.now());
    timeline.advance(10ms);
    writer.writeSound(block, timeline.now());
  }
  timeline.advance(0ms);
}

TEST(StreamWriterTest, WhatIsWrittenCanBeReadBack) {
  const test::TempFolder folder;
  for (const std::string name : {"a.flv", "a.ts", "a.mp4", "a.mkv"}) {
    SCOPED_TRACE(name);
    const auto timeline = Timeline::manual();
    Report report;
    StreamWriter writer(*timeline, "file://" + folder.path(name), {128, 96, 20, 500, 96}, report.events());
    timeline->advance(50ms);
    ASSERT_EQ((std::vector<std::string>{""}), report.opened);
    writeStream(*timeline, writer, name == "a.ts" ? 64 : 128);
    bool isDone = false;
    writer.finish([&isDone] { isDone = true; });
    timeline->advance(0ms);
    ASSERT_TRUE(isDone);
    EXPECT_EQ(0u, report.failed.size() + writer.dropped());

    const auto opened = MediaFileReader::open(folder.path(name), MediaKind::both);
    ASSERT_TRUE(opened.reader) << opened.error;
    int pictures = 0;
    while (const auto read = opened.reader->nextPicture()) {
      EXPECT_NEAR(50000.0 * pictures++, static_cast<double>(read->timestamp.count()), 40000);
      ASSERT_EQ(128, read->picture->width());
      ASSERT_EQ(96, read->picture->height());
      EXPECT_NEAR(kColor.y, colorAt(*read->picture, 64, 48).y, 3);
      EXPECT_NEAR(kColor.v, colorAt(*read->picture, 64, 48).v, 3);
      EXPECT_NEAR(name == "a.ts" ? 16 : kColor.y, colorAt(*read->picture, 8, 48).y, 5) << "black bars";
    }
    EXPECT_EQ(30, pictures);
    std::vector<std::int16_t> sound;
    while (const auto read = opened.reader->nextSound())
      sound.insert(sound.end(), read->samples.begin(), read->samples.end());
    EXPECT_NEAR(1.5 * 48000, static_cast<double>(sound.size()) / 2, 4096);
    EXPECT_NEAR(0.5, test::toneLevel(std::span(sound).subspan(19200, 48000), 440), 0.05);
  }
}

TEST(StreamWriterTest, ReportsAddressesThatFailAndDropsWhatComesTooFast) {
  const test::TempFolder folder;
  const auto timeline = Timeline::manual();
  Report report;
  auto nowhere = std::make_unique<StreamWriter>(*timeline, "file://" + folder.path("none/a.flv"),
                                                StreamFormat(), report.events());
  auto refused =
      std::make_unique<StreamWriter>(*timeline, "rtmp://127.0.0.1:1/live/a", StreamFormat(), report.events());
  timeline->advance(0ms);
  ASSERT_EQ(2u, report.opened.size());
  EXPECT_NE(std::string::npos, report.opened[0].find("No such file")) << report.opened[0];
  EXPECT_NE(std::string::npos, report.opened[1].find("refused")) << report.opened[1];

  Report early;
  std::make_unique<StreamWriter>(*timeline, "file://" + folder.path("b.flv"), StreamFormat(), early.events())
      .reset();
  EXPECT_EQ(1u, early.opened.size()) << "told even when it ends before it is open";

  Report fast;
  StreamWriter hasty(*timeline, "file://" + folder.path("c.flv"), StreamFormat(), fast.events());
  timeline->advance(0ms);
  for (int i = 0; i < 20; ++i) hasty.writePicture(solid(64, 64, kColor), timeline->now() + i * 10ms);
  EXPECT_EQ(12u, hasty.dropped());
}

TEST(StreamWriterTest, TellsUsableAddresses) {
  const std::pair<const char*, StreamAddress> cases[] = {
      {"rtmp://host/live/stream", StreamAddress::usable},
      {"RTMP://[::1]:1935/live", StreamAddress::usable},
      {"udp://127.0.0.1:5000", StreamAddress::usable},
      {"file:///tmp/a.mp4", StreamAddress::usable},
      {"", StreamAddress::malformed},
      {"host/live", StreamAddress::malformed},
      {"rtmp://host", StreamAddress::malformed},
      {"rtmp://host:0/live", StreamAddress::malformed},
      {"rtmp://host:99999/live", StreamAddress::malformed},
      {"rtmp://ho st/live", StreamAddress::malformed},
      {"udp://127.0.0.1", StreamAddress::malformed},
      {"file://a.mp4", StreamAddress::malformed},
      {"http://host/live", StreamAddress::unknownProtocol},
      {"file:///tmp/a.txt", StreamAddress::unknownContainer},
  };
  for (const auto& [address, expected] : cases) EXPECT_EQ(expected, StreamWriter::check(address)) << address;
}

}  // namespace
}  // namespace lumo
