#include <malloc.h>

#include <cmath>
#include <utility>

#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConfigUtility.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

using Lines = std::vector<std::string>;

/// Which picture of a clip is in the middle of `picture`; -1 for none of the first twenty.
std::int32_t pictureNumber(const LumoRTCI420Buffer& picture) {
  const YuvColor seen = colorAt(picture, picture.width() / 2, picture.height() / 2);
  for (std::int32_t number = 0; number < 20; ++number) {
    if (std::abs(seen.y - clipColor(number).y) < 3 && std::abs(seen.u - clipColor(number).u) < 4)
      return number;
  }
  return -1;
}

class FileStreamTest : public CallTest, protected LineRecorder {
 protected:
  FileStreamTest() {
    delegate->onCustomStreamPublished = [this](auto& tag, auto code, auto& message) {
      line("published", tag, code, code ? message : "");
    };
    delegate->onCustomStreamPublishFinished = [this](auto& tag) { line("finished", tag); };
    delegate->onCustomStreamUnpublished = [this](auto& tag, auto code, auto&) {
      line("unpublished", tag, code);
    };
    delegate->onRemoteCustomStreamPublished = [this](auto&, auto&&... all) { line("comes:", all...); };
    delegate->onRemoteCustomStreamUnpublished = [this](auto&, auto&&... all) { line("goes:", all...); };
    engine->setEngineDelegate(delegate);
    watchAs(add("anna"));
    local->setSpeaker([this](const AudioBlock& block, Microseconds) { speaker.add(block); });
    join();
    publish(kAudio);
  }
  ~FileStreamTest() override {
    anna->onVideo({});
    anna->onAudio({});
  }

  void watchAs(const ParticipantPtr& watcher) {
    anna = watcher;
    anna->onVideo([this](const std::string& tag, const LMRTCVideoFrame& frame) {
      if (tag != "clip") return;
      last = frame.rtcVideoFrame->buffer->toI420();
      const std::int32_t number = pictureNumber(*last);
      if (pictures.empty() || pictures.back() != number) pictures.push_back(number);
    });
    anna->onAudio([this](const std::string& tag, const AudioBlock& block, Microseconds) {
      (tag == "clip" ? clipSound : microphone).add(block);
    });
  }
  void start(const std::string& path, bool replace = false, bool playback = false) {
    ASSERT_EQ(0, engine->createCustomStreamFromFile(path, "clip", replace, playback));
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    advance(0us);
  }

  /// In the next 200 ms: the microphone and the clip's tone in the microphone's stream, the clip's tone in
  /// its own stream and on the speaker; in tenths of each one's level.
  std::string levels() {
    microphone = clipSound = speaker = {};
    advance(200ms);
    return microphone.tenths(300, 0.2) + " " + microphone.tenths(700, 0.5) + " | " +
           clipSound.tenths(700, 0.5) + " | " + speaker.tenths(700, 0.5);
  }

  Lines takeLines() { return std::exchange(lines, {}); }

  TempFolder folder;
  ParticipantPtr anna;
  std::vector<std::int32_t> pictures;
  std::shared_ptr<const LumoRTCI420Buffer> last;
  SoundMeter microphone;
  SoundMeter clipSound;
  SoundMeter speaker;
};

const Clip kClip{.pictures = 10, .toneHz = 700, .toneSeconds = 1};

TEST_F(FileStreamTest, PicturesArriveInOrderAndTheEndIsReportedOnce) {
  const std::string path = writeClip(folder, "a.mkv", kClip);
  LMRTCIWVideoConfig config;
  config.resolution = 2;
  config.fps = 3;
  ASSERT_EQ(0, engine->createCustomStreamFromFile("file://" + path, "clip", false, false));
  ASSERT_EQ(0, engine->setCustomStreamVideoConfig(&config, "clip"));
  for (int round = 0; round < 2; ++round) {
    pictures.clear();
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    advance(0us);
    EXPECT_EQ((Lines{"published clip 0 "}), takeLines());
    EXPECT_EQ("10 0 | 10 | 0", levels());
    advance(400ms);
    EXPECT_EQ((std::vector<std::int32_t>{0, 1, 2, 3, 4, 5, 6}), pictures);
    advance(390ms);
    EXPECT_TRUE(lines.empty());
    advance(100ms);
    EXPECT_EQ((Lines{"finished clip"}), takeLines());
    EXPECT_EQ((std::vector<std::int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), pictures);
    EXPECT_EQ("10 0 | - | 0", levels()) << "not published any more";
  }
  ASSERT_TRUE(last);
  EXPECT_EQ(LMRTCIWConfigUtility::getVideoSize(config.resolution, 0), last->width());
  EXPECT_EQ(LMRTCIWConfigUtility::getVideoSize(config.resolution, 1), last->height());
  EXPECT_LT(colorAt(*last, 1, 1).y, 20) << "black bars";
}

TEST_F(FileStreamTest, TheSoundGoesWhereItIsAskedTo) {
  const std::string path = writeClip(folder, "a.mkv", {.pictures = 15, .toneHz = 700, .toneSeconds = 1.5});
  start(path, true, true);
  EXPECT_EQ("0 10 | - | 10", levels());
  ASSERT_EQ(0, engine->muteLocalCustomStream("clip", true));
  EXPECT_EQ("0 0 | - | 10", levels()) << "the microphone stays replaced";
  pictures.clear();
  advance(100ms);
  EXPECT_TRUE(pictures.empty()) << "muted";
  ASSERT_EQ(0, engine->muteLocalCustomStream("clip", false));
  EXPECT_EQ("0 10 | - | 10", levels());
  ASSERT_EQ(0, engine->unpublishCustomStream("clip"));
  advance(0us);
  EXPECT_EQ((Lines{"published clip 0 ", "unpublished clip 0"}), takeLines());
  EXPECT_EQ("10 0 | - | 0", levels());
  EXPECT_TRUE(lines.empty()) << "no end after a stop";
}

TEST_F(FileStreamTest, WhatCannotBePublishedEndsInAFailureAndNothingElseBreaks) {
  const std::string good = writeClip(folder, "good.mkv", kClip);
  const std::string whole = readFile(good);
  const std::string files[] = {folder.path("missing.mp4"), folder.write("empty.mp4", ""),
                               folder.write("cut.mkv", whole.substr(0, 40)),
                               writeClip(folder, "sound.mkv", {.pictures = 0, .toneHz = 700})};
  for (const std::string& path : files) {
    SCOPED_TRACE(path);
    start(path, true, true);
    EXPECT_EQ((Lines{"published clip -20 Open File Error."}), takeLines());
    EXPECT_EQ("10 0 | - | 0", levels());
    EXPECT_EQ(0, engine->unpublishCustomStream("clip"));
    advance(0us);
    EXPECT_EQ((Lines{"unpublished clip " + std::to_string(LocalCodeNotPublished)}), takeLines());
  }
  EXPECT_TRUE(pictures.empty());

  start(folder.write("half.mkv", whole.substr(0, whole.size() / 2)));
  advance(1500ms);
  EXPECT_EQ((Lines{"published clip 0 ", "finished clip"}), takeLines()) << "played up to where it is cut";
}

TEST_F(FileStreamTest, StoppingAtAnyMomentLeavesNothingBehind) {
  const std::string path = writeClip(folder, "a.mkv", kClip);
  std::size_t usedBefore = 0;
  for (int round = 0; round < 720; ++round) {
    start(path, round % 2 == 0, round % 3 == 0);
    if (round % 5 != 0) advance(Microseconds(round % 90 * 1000));
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    advance(0us);
    ASSERT_EQ(
        "published clip " + std::to_string(LocalCodeAlreadyPublished) + " The stream is published already",
        takeLines().back());
    ASSERT_EQ(0, engine->unpublishCustomStream("clip"));
    ASSERT_EQ(0, engine->publishCustomStream("clip"));
    ASSERT_EQ(0, engine->unpublishCustomStream("clip"));
    advance(20ms);
    ASSERT_EQ((Lines{"unpublished clip 0", "unpublished clip 0"}), takeLines())
        << "stopped before it was opened";
    pictures.clear();
    microphone = clipSound = speaker = {};
    if (round == 449) usedBefore = mallinfo2().uordblks;
  }
  EXPECT_LT(mallinfo2().uordblks, usedBefore + 16 * 1024);

  start(path, true, true);
  advance(100ms);
  ASSERT_EQ(0, engine->leaveRoom());
  advance(2s);
  EXPECT_EQ((Lines{"published clip 0 "}), takeLines()) << "left in the middle";
}

TEST_F(FileStreamTest, ALongFilePlaysInConstantMemory) {
  anna->onAudio({});
  local->setSpeaker({});  // they keep what they hear
  const Clip clip{.pictures = 1200, .toneHz = 700, .toneSeconds = 120};
  start(writeClip(folder, "a.mov", clip), false, true);
  advance(10s);
  const std::size_t usedBefore = mallinfo2().uordblks;
  advance(100s);
  EXPECT_LT(mallinfo2().uordblks, usedBefore + 16 * 1024);
  EXPECT_EQ((Lines{"published clip 0 "}), takeLines()) << "it is still being played";
}

TEST_F(FileStreamTest, BecomingAudienceTakesTheFileOutOfTheRoom) {
  engine->leaveRoom();
  watchAs(local->join("live", "anna", {.role = LumoRTCLocal::Role::audience}).participant);
  const auto setup = std::make_shared<LMRTCIWRoomSetup>();
  setup->role = LMRTCIWRoleLiveBroadcaster;
  engine->joinRoom("live", setup);
  advance(0us);
  publish(kAudio);
  start(writeClip(folder, "a.mkv", kClip), true, true);
  EXPECT_EQ("0 10 | - | 10", levels());
  EXPECT_EQ(0, engine->switchLiveRole(LMRTCIWRoleLiveAudience));
  advance(0us);
  pictures.clear();
  EXPECT_EQ("- - | - | 0", levels());
  advance(2s);
  EXPECT_EQ((Lines{"published clip 0 "}), takeLines()) << "neither unpublished by the host nor finished";
  EXPECT_TRUE(pictures.empty());
  EXPECT_NE(0, engine->unpublishCustomStream("clip"));
}

TEST_F(FileStreamTest, ParticipantsPublishFilesAsTwoStreams) {
  const std::string path = writeClip(folder, "a.mkv", kClip);
  EXPECT_EQ(LocalCodeFileFailed, anna->publishFile("film", folder.path("missing")));
  ASSERT_EQ(0, anna->publishFile("film", path));
  EXPECT_EQ(LocalCodeAlreadyPublished, anna->publishFile("film", path));
  advance(0us);
  EXPECT_EQ((Lines{"comes: anna film 2"}), takeLines());
  ASSERT_EQ(0, engine->subscribeCustomStream("anna", "film", kBoth, false));
  EXPECT_EQ("10 0 | - | 10", levels()) << "heard on the speaker";
  advance(900ms);
  EXPECT_EQ((Lines{"goes: anna film 2"}), takeLines());
}

}  // namespace
}  // namespace lumo::test
