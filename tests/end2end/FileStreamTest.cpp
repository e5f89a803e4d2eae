#include <malloc.h>

#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

const Clip kClip{.pictures = 10, .toneHz = 700, .toneSeconds = 1};

/// Which picture of a clip is in the middle of `picture`; -1 for none of the first twenty.
std::int32_t pictureNumber(const LumoRTCI420Buffer& picture) {
  const YuvColor seen = colorAt(picture, picture.width() / 2, picture.height() / 2);
  std::int32_t number = 19;
  while (number >= 0 && !isNear(seen, clipColor(number), 2)) --number;
  return number;
}

/// The host publishes files under the tag "clip", and anna receives them.
class FileStreamTest : public CallTest {
 protected:
  FileStreamTest() {
    delegate->onCustomStreamPublished = recorded("published");
    delegate->onCustomStreamPublishFinished = recorded("finished");
    delegate->onCustomStreamUnpublished = recorded("unpublished");
    delegate->onRemoteCustomStreamPublished = recorded("comes:");
    delegate->onRemoteCustomStreamUnpublished = recorded("goes:");
    anna->onVideo([this](const std::string&, const LMRTCVideoFrame& frame) {
      last = frame.rtcVideoFrame->buffer->toI420();
      const std::int32_t number = pictureNumber(*last);
      if (pictures.empty() || pictures.back() != number) pictures.push_back(number);
    });
    anna->onAudio([this](const std::string& tag, const AudioBlock& block, Microseconds) {
      (tag == "clip" ? clipSound : microphone).add(block);
    });
    join();
    publish(kAudio);
  }

  void start(const std::string& path, bool replace, bool playback) {
    ASSERT_EQ(0, engine->createCustomStreamFromFile(path, "clip", replace, playback));
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    advance(0us);
  }

  /// In the next 200 ms: the microphone and the clip's tone in the microphone's stream, the clip's tone in
  /// its own stream and on the speaker; in tenths of each one's level.
  std::string levels() {
    microphone = clipSound = speaker = {};
    advance(200ms);
    return microphone.tenths(300) + " " + microphone.tenths(700, 0.5) + " | " + clipSound.tenths(700, 0.5) +
           " | " + speaker.tenths(700, 0.5);
  }

  TempFolder folder;
  ParticipantPtr anna = add("anna");
  std::vector<std::int32_t> pictures;
  Picture last;
  SoundMeter microphone, clipSound;
};

TEST_F(FileStreamTest, PicturesArriveInOrderAndTheEndIsReportedOnce) {
  LMRTCIWVideoConfig config;
  config.resolution = 2;
  config.fps = 3;
  const std::string path = writeClip(folder, "a.mkv", kClip);
  ASSERT_EQ(0, engine->createCustomStreamFromFile("file://" + path, "clip", false, false));
  ASSERT_EQ(0, engine->setCustomStreamVideoConfig(&config, "clip"));
  for (int round = 0; round < 2; ++round) {
    pictures.clear();
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    EXPECT_EQ((Lines{"published clip 0 Success"}), told());
    EXPECT_EQ("10 0 | 10 | 0", levels());
    advance(790ms);
    EXPECT_EQ(Lines{}, told());
    advance(100ms);
    EXPECT_EQ((Lines{"finished clip"}), told());
    EXPECT_EQ((std::vector<std::int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), pictures);
    EXPECT_EQ("10 0 | - | 0", levels()) << "not published any more";
  }
  EXPECT_EQ(std::pair(144, 256), std::pair(last->width(), last->height()));
  EXPECT_LT(colorAt(*last, 1, 1).y, 20) << "black bars";
}

TEST_F(FileStreamTest, TheSoundReplacesTheMicrophoneAndIsMutedWithThePictures) {
  start(writeClip(folder, "a.mkv", {.pictures = 15, .toneHz = 700, .toneSeconds = 1.5}), true, true);
  EXPECT_EQ("0 10 | - | 10", levels());
  EXPECT_FALSE(std::exchange(pictures, {}).empty());
  ASSERT_EQ(0, engine->muteLocalCustomStream("clip", true));
  EXPECT_EQ("0 0 | - | 10", levels()) << "the microphone stays replaced";
  EXPECT_TRUE(pictures.empty());
  ASSERT_EQ(0, engine->muteLocalCustomStream("clip", false));
  EXPECT_EQ("0 10 | - | 10", levels());
  ASSERT_EQ(0, engine->unpublishCustomStream("clip"));
  EXPECT_EQ((Lines{"published clip 0 Success", "unpublished clip 0 Success"}), told());
  EXPECT_EQ("10 0 | - | 0", levels());
  EXPECT_EQ(Lines{}, told()) << "no end after a stop";
}

TEST_F(FileStreamTest, WhatCannotBePublishedEndsInAFailureAndNothingElseBreaks) {
  const std::string whole = readFile(writeClip(folder, "good.mkv", kClip));
  for (const std::string& path : {folder.path("missing.mp4"), folder.write("empty.mp4", ""),
                                  folder.write("cut.mkv", whole.substr(0, 40)),
                                  writeClip(folder, "sound.mkv", {.pictures = 0, .toneHz = 700})}) {
    start(path, true, true);
    EXPECT_EQ((Lines{"published clip -20 Open File Error."}), told()) << path;
    EXPECT_EQ("10 0 | - | 0", levels()) << path;
  }
  EXPECT_TRUE(pictures.empty());
  start(folder.write("half.mkv", whole.substr(0, whole.size() / 2)), false, false);
  advance(1500ms);
  EXPECT_EQ((Lines{"published clip 0 Success", "finished clip"}), told()) << "played up to where it is cut";
}

TEST_F(FileStreamTest, StoppingAtAnyMomentAndPlayingForLongTakeNoMoreMemory) {
  anna->onAudio({});
  local->setSpeaker({});  // they keep what they hear
  const std::string path = writeClip(folder, "a.mkv", kClip);
  std::size_t usedBefore = 0;
  for (int round = 0; round < 720; ++round) {
    start(path, round % 2 == 0, round % 3 == 0);
    if (round % 5 != 0) advance(Microseconds(round % 90 * 1000));
    ASSERT_EQ(0, engine->unpublishCustomStream("clip"));
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    ASSERT_EQ(0, engine->unpublishCustomStream("clip"));
    advance(20ms);
    const Lines all = told();
    ASSERT_EQ((Lines{"unpublished clip 0 Success", "unpublished clip 0 Success"}),
              Lines(all.end() - 2, all.end()))
        << "stopped before it was opened";
    pictures.clear();
    if (round == 449) usedBefore = mallinfo2().uordblks;
  }
  EXPECT_LT(mallinfo2().uordblks, usedBefore + 16 * 1024);

  start(writeClip(folder, "a.mov", {.pictures = 1200, .toneHz = 700, .toneSeconds = 120}), false, true);
  advance(10s);
  usedBefore = mallinfo2().uordblks;
  advance(100s);
  EXPECT_LT(mallinfo2().uordblks, usedBefore + 16 * 1024);
  ASSERT_EQ(0, engine->leaveRoom());
  EXPECT_EQ((Lines{"published clip 0 Success"}), told()) << "left in the middle";
}

TEST_F(FileStreamTest, ParticipantsPublishFilesAsTwoStreams) {
  EXPECT_EQ(LocalCodeFileFailed, anna->publishFile("film", folder.path("missing")));
  ASSERT_EQ(0, anna->publishFile("film", writeClip(folder, "a.mkv", kClip)));
  EXPECT_EQ((Lines{"comes: r anna film 2"}), told());
  ASSERT_EQ(0, engine->subscribeCustomStream("anna", "film", kBoth, false));
  EXPECT_EQ("10 0 | - | 10", levels()) << "heard on the speaker";
  advance(900ms);
  EXPECT_EQ((Lines{"goes: r anna film 2"}), told());
}

}  // namespace
}  // namespace lumo::test
