#include <malloc.h>

#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

const Clip kClip{.pictures = 10, .toneHz = 700, .toneSeconds = 1};

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
      const YuvColor middle = colorAt(*last, last->width() / 2, last->height() / 2);
      const std::int64_t number = std::lround((middle.y - clipColor(0).y) / 5.0);
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
  std::vector<std::int64_t> pictures;  // by their numbers
  Picture last;
  SoundMeter microphone, clipSound;
};

TEST_F(FileStreamTest, PicturesArriveInOrderAndTheEndIsReportedOnce) {
  start("file://" + writeClip(folder, "a.mkv", kClip), false, false);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ((Lines{"published clip 0 Success"}), told());
    EXPECT_EQ("10 0 | 10 | 0", levels());
    advance(790ms);
    EXPECT_EQ(Lines{}, told());
    advance(100ms);
    EXPECT_EQ((Lines{"finished clip"}), told());
    EXPECT_EQ((std::vector<std::int64_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), std::exchange(pictures, {}));
    EXPECT_EQ("10 0 | - | 0", levels()) << "not published any more";
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
  }
  EXPECT_EQ(std::pair(480, 640), std::pair(last->width(), last->height()));
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
  anna->onVideo([](auto&&...) {});
  anna->onAudio([](auto&&...) {});
  local->setSpeaker([](auto&&...) {});  // they would keep what they hear
  const std::string path = writeClip(folder, "a.mkv", kClip);
  std::size_t usedBefore = 0;
  for (int round = 0; round < 360; ++round) {
    start(path, round % 2 == 0, round % 3 == 0);
    if (round % 5 != 0) advance(Microseconds(round % 90 * 1000));
    engine->unpublishCustomStream("clip");
    engine->publishCustomStream("clip");
    engine->unpublishCustomStream("clip");
    advance(20ms);
    ASSERT_EQ("unpublished clip 0 Success", lastTold());
    if (round == 179) usedBefore = mallinfo2().uordblks;
  }
  EXPECT_LT(mallinfo2().uordblks, usedBefore + 16 * 1024);

  start(writeClip(folder, "a.mov", {.pictures = 1200, .toneHz = 700, .toneSeconds = 120}), false, true);
  pictures.reserve(1200);
  advance(10s);
  usedBefore = mallinfo2().uordblks;
  advance(100s);
  EXPECT_LT(mallinfo2().uordblks, usedBefore + 16 * 1024);
  ASSERT_EQ(0, engine->leaveRoom());
  EXPECT_EQ((Lines{"published clip 0 Success"}), told()) << "left in the middle";
}

TEST_F(FileStreamTest, ParticipantsPublishFilesAsTwoStreams) {
  ASSERT_EQ(0, anna->publishFile("film", writeClip(folder, "a.mkv", kClip)));
  EXPECT_EQ((Lines{"comes: r anna film 2"}), told());
  ASSERT_EQ(0, engine->subscribeCustomStream("anna", "film", kBoth, false));
  EXPECT_EQ("10 0 | - | 10", levels()) << "heard on the speaker";
  advance(900ms);
  EXPECT_EQ((Lines{"goes: r anna film 2"}), told());

  const std::string film = writeClip(folder, "b.mkv", {.pictures = 100});
  ASSERT_EQ(0, anna->publishFile("film", film));
  const auto bob = local->join("r", "bob", {.camera = film}).participant;
  EXPECT_EQ(0, bob->publish(kLMRTCDefaultStreamTag, Media::video, 7));
  EXPECT_EQ(0, bob->unpublishVideo());
  EXPECT_EQ(0, bob->publishVideo());
  advance(0us);
  const auto view = LMRTCIWView::create();
  ASSERT_EQ(0, engine->setRemoteView(view, "bob"));
  ASSERT_EQ(0, engine->subscribe("bob", kVideo));
  advance(1s);
  ASSERT_TRUE(nativeView(view)->picture());
  EXPECT_EQ(99u, readingOf(nativeView(view)->picture()).sourceNumber) << "still the file";
  EXPECT_EQ(0, bob->kick("anna", 1));
  engine->leaveRoom();
  advance(1s);
  EXPECT_EQ(0u, local->advance(1s)) << "nothing is read for nobody";
}

}  // namespace
}  // namespace lumo::test
