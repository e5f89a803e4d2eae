#include <cmath>
#include <optional>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

constexpr double kFileLevel = 0.25;

/// The host sends files with the microphone, which anna hears.
class SoundFilesTest : public CallTest {
 protected:
  SoundFilesTest() {
    anna->onAudio(heard.sink());
    Console::setSink([this](const std::string& text) {
      const auto state = text.find("StateChanged: ");
      if (state != std::string::npos) line("state", text.substr(state + 14));
    });
    delegate->onAudioMixingFinished = recorded("finished");
    delegate->onAudioMixingProgressReported = [this](float seconds) {
      line("at", std::lround(seconds * 1000));
    };
    join();
    publish(kAudio);
  }
  ~SoundFilesTest() override { Console::setSink({}); }

  /// What arrives in the next 100 ms, in tenths of each tone's own level: the microphone and the files' tones
  /// of 500 and 900 Hz at anna's, then those of the files on the speaker.
  std::string levels() {
    heard = speaker = {};
    advance(100ms);
    return heard.tenths(300) + " " + heard.tenths(500, kFileLevel) + " " + heard.tenths(900, kFileLevel) +
           " | " + speaker.tenths(500, kFileLevel) + " " + speaker.tenths(900, kFileLevel);
  }

  TempFolder folder;
  ParticipantPtr anna = add("anna");
  SoundMeter heard;
};

TEST_F(SoundFilesTest, EveryFormatArrivesAtItsLevelAndAtThePlaceThatIsSought) {
  for (const char* const name : {"a.wav", "a.flac", "a.mp3", "a.m4a"}) {
    SCOPED_TRACE(name);
    const std::string path = writeTones(folder, name, {{500, 2}, {900, 1.9}});
    ASSERT_EQ(0, engine->startAudioMixing("file://" + path, LMRTCMixerModeMix, true, 1));
    EXPECT_EQ(3, engine->getAudioMixingDuration());
    advance(200ms);
    EXPECT_EQ("10 10 0 | 10 0", levels());
    engine->setAudioMixingPosition(2.5);
    advance(150ms);
    EXPECT_EQ("10 0 10 | 0 10", levels());
    EXPECT_NEAR(2.7, engine->getAudioMixingPosition(), 0.011);
    advance(2s);
    EXPECT_EQ("finished", lastTold());
    EXPECT_EQ("10 0 0 | 0 0", levels());
  }
}

TEST_F(SoundFilesTest, ModesAndVolumesDecideWhoHearsWhat) {
  const std::string path = writeTones(folder, "a.wav", {{500, 0.25}});
  const auto start = [&](std::int64_t mode, bool playback) {
    return [this, path, mode, playback] { engine->startAudioMixing(path, mode, playback, 0); };
  };
  run(
      {
          {"local playback only", start(LMRTCMixerModeLocalOnly, true), "10 0 0 | 10 0"},
          {"mixed, not played here", start(LMRTCMixerModeMix, false), "10 10 0 | 0 0"},
          {"in place of the microphone", start(LMRTCMixerModeReplace, true), "0 10 0 | 10 0"},
          {"half to the others", [&] { engine->adjustAudioMixingPublishVolume(50); }, "0 5 0 | 10 0"},
          {"a fifth here", [&] { engine->adjustAudioMixingPlaybackVolume(20); }, "0 5 0 | 2 0"},
          {"paused", [&] { engine->pauseAudioMixing(); }, "10 0 0 | 0 0"},
          {"resumed", [&] { engine->resumeAudioMixing(); }, "0 5 0 | 2 0"},
          {"muted", [&] { engine->muteLocalStream(kAudio, true); }, "- - - | 2 0"},
          {"stopped", [&] { engine->stopAudioMixing(); }, "- - - | 0 0"},
      },
      [this] { return levels(); });
}

TEST_F(SoundFilesTest, ProgressAndTheEndAreToldInOrder) {
  const std::string half = writeTones(folder, "half.wav", {{500, 0.45}});
  engine->leaveRoom();
  ASSERT_EQ(0, engine->startAudioMixing(half, LMRTCMixerModeMix, true, 2));
  advance(2s);
  EXPECT_EQ((Lines{"state 0 , reason: 0", "at 200", "at 400", "at 150", "at 350", "at 450",
                   "state 2 , reason: 4", "finished"}),
            told())
      << "without a room, over the seam";
}

TEST_F(SoundFilesTest, EffectsSoundOnTopOfEachOther) {
  writeTones(folder, "a b.wav", {{500, 0.2}});
  ASSERT_EQ(0, engine->createAudioEffect("file://" + folder.path("a%20b.wav"), 5));
  ASSERT_EQ(0, engine->createAudioEffect(writeTones(folder, "b.flac", {{900, 0.4}}), 9));
  ASSERT_EQ(0, engine->createAudioEffect(folder.path("missing.wav"), 7));
  run(
      {
          {"endlessly", [&] { engine->playAudioEffect(5, 100, -1); }, "10 10 0 | 10 0"},
          {"another one", [&] { engine->playAudioEffect(9, 50, 2); }, "10 10 5 | 10 5"},
          {"over its seam", [&] { advance(250ms); }, "10 10 5 | 10 5"},
          {"louder than it is", [&] { engine->adjustAudioEffect(9, 160); }, "10 10 16 | 10 16"},
          {"all at half", [&] { engine->adjustAllAudioEffectsVolume(50); }, "10 5 8 | 5 8"},
          {"one paused", [&] { engine->pauseAudioEffect(5); }, "10 0 8 | 0 8"},
          {"the other at its end", [&] { advance(200ms); }, "10 0 0 | 0 0"},
          {"a missing file", [&] { engine->playAudioEffect(7, 100, 1); }, "10 0 0 | 0 0"},
          {"all resumed", [&] { engine->resumeAllAudioEffects(); }, "10 5 0 | 5 0"},
          {"the first stopped", [&] { engine->stopAudioEffect(5); }, "10 0 0 | 0 0"},
          {"all paused", [&] { engine->playAudioEffect(5, 100, -1), engine->pauseAllAudioEffects(); },
           "10 0 0 | 0 0"},
          {"one resumed", [&] { engine->resumeAudioEffect(5); }, "10 5 0 | 5 0"},
          {"all stopped", [&] { engine->stopAllAudioEffects(); }, "10 0 0 | 0 0"},
      },
      [this] { return levels(); });
  EXPECT_EQ(100, engine->getAudioEffectVolume(5));
  EXPECT_EQ(50, engine->getAllAudioEffectsVolume());
}

TEST_F(SoundFilesTest, BadFilesAreRefusedOrEndWithAReason) {
  const std::string good = writeTones(folder, "good.wav", {{500, 3}});
  ASSERT_EQ(0, engine->startAudioMixing(good, LMRTCMixerModeMix, true, 1));
  for (const std::string& path :
       {std::string(), folder.path("missing.wav"), folder.path(""), folder.write("empty.mp3", ""),
        folder.write("head.wav", readFile(good).substr(0, 30)), writeClip(folder, "silent.mov", {})}) {
    EXPECT_NE(0, engine->startAudioMixing(path, LMRTCMixerModeReplace, false, 1, 2.5)) << path;
    EXPECT_EQ(0, engine->getAudioMixingDuration()) << path;
  }
  EXPECT_EQ("10 10 0 | 10 0", levels()) << "the good one goes on";

  for (const char* const name : {"cut.flac", "cut.mp3"}) {
    const std::string whole = readFile(writeTones(folder, name, {{500, 3}}));
    folder.write(name, whole.substr(0, whole.size() / 3));
    ASSERT_EQ(0, engine->startAudioMixing(folder.path(name), LMRTCMixerModeMix, true, 0));
    EXPECT_EQ("10 10 0 | 10 0", levels()) << name;
    advance(2s);
    EXPECT_EQ("state 3 , reason: 6", lastTold()) << name;
    EXPECT_EQ("10 0 0 | 0 0", levels()) << "the call goes on";
  }
}

TEST_F(SoundFilesTest, BothSidesAreRecorded) {
  ASSERT_EQ(std::nullopt, local->recordSpeaker(folder.path("speaker.wav")));
  EXPECT_NE(std::nullopt, local->recordMicrophone(folder.path("no/folder.wav")));
  ASSERT_EQ(std::nullopt, local->recordMicrophone(folder.path("sent.wav")));
  engine->startAudioMixing(writeTones(folder, "a.wav", {{500, 1}}), LMRTCMixerModeMix, true, 1);
  advance(1s);
  ASSERT_EQ(std::nullopt, local->recordSpeaker({}));
  ASSERT_EQ(std::nullopt, local->recordMicrophone({}));
  advance(500ms);
  const auto tones = [&](const std::string& name) {
    const auto reader = MediaFileReader::open(folder.path(name), MediaKind::sound).reader;
    SoundMeter all;
    while (const auto sound = reader ? reader->nextSound() : std::nullopt)
      all.samples.insert(all.samples.end(), sound->samples.begin(), sound->samples.end());
    return all.tenths(300) + " " + all.tenths(500, kFileLevel) + " of " + std::to_string(all.samples.size());
  };
  EXPECT_EQ("0 10 of 96000", tones("speaker.wav"));
  EXPECT_EQ("10 10 of 96000", tones("sent.wav"));
}

}  // namespace
}  // namespace lumo::test
