#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using AudioTest = EngineTest;

TEST_F(AudioTest, EffectsNeedARoomAndAnIdThatWasCreated) {
  const std::string create = "T createAudioEffect url:a.wav,effectId:7";
  const std::string adjust = "T adjustAudioEffect effectId:7,volume:101";
  expect(kNotJoined, engine->createAudioEffect("a.wav", 7), {create, kNoUser});
  join();
  expect(kBadParameter, engine->stopAudioEffect(7), {"T stopAudioEffect", "E: effectSoundIdDict error"});
  expect(kBadParameter, engine->adjustAudioEffect(7, 101),
         {adjust, "E: effectSoundIdDict error or volume < 0"});
  expect(kBadParameter, engine->createAudioEffect(std::nullopt, 7),
         {"T createAudioEffect url:(null),effectId:7", "E: url is nil"});
  expect(0, engine->createAudioEffect("a.wav", 7), {create});
  expect(kBadParameter, engine->createAudioEffect("b.wav", 7), {"T createAudioEffect url:b.wav,effectId:7"});
  MainQueue::runPending();
  EXPECT_TRACE("R createAudioEffect callback:onAudioEffectCreated, code:0, url:a.wav,effectId:7",
               "host onAudioEffectCreated 7 0 ");

  expect(0, engine->playAudioEffect(7, 150, -1),
         {"T playAudioEffect effectId:7,volume:150,loop:-1,", "-> playEffect 7 a.wav -1 1",
          "-> setVolumeOfEffect 7 150"});
  expect(0, engine->pauseAudioEffect(7), {"T pauseAudioEffect effectId:7", "-> pauseEffect 7"});
  expect(0, engine->resumeAudioEffect(7), {"T resumeAudioEffect effectId:7", "-> resumeEffect 7"});
  expect(0, engine->stopAudioEffect(7), {"T stopAudioEffect", "-> stopEffect 7"});
  expect(77, engine->getAudioEffectVolume(7), {"T getAudioEffectVolume effectId:7"});
  expect(0, engine->adjustAudioEffect(7, 101), {adjust, "-> setVolumeOfEffect 7 101"});
  expect(0, engine->pauseAllAudioEffects(), {"T pauseAllAudioEffects", "-> pauseAllEffects"});
  expect(0, engine->resumeAllAudioEffects(), {"T resumeAllAudioEffects", "-> resumeAllEffects"});
  expect(0, engine->stopAllAudioEffects(), {"T stopAllAudioEffects", "-> stopAllEffects"});
  expect(0, engine->adjustAllAudioEffectsVolume(200),
         {"T adjustAllAudioEffectsVolume volume:200", "-> setEffectsVolume 200"});
  expect(60, engine->getAllAudioEffectsVolume(), {"T getAllAudioEffectsVolume"});
  expect(0, engine->releaseAudioEffect(7), {"T releaseAudioEffect effectId:7"});
  expect(kBadParameter, engine->releaseAudioEffect(7), {"T releaseAudioEffect effectId:7"});
}

TEST_F(AudioTest, MixingStartsAndReportsOnTheMainQueue) {
  EXPECT_EQ(kBadParameter, engine->getAudioMixingDuration());
  trace->take();
  const std::string keys = "url:m.mp3,mode:5,playback:1,loop:2,position:1.5";
  expect(
      0, engine->startAudioMixing("m.mp3", 5, true, 2, 1.5),
      {"T startAudioMixing " + keys, "-> mixer.setDelegate engine", "T setAudioMixingPosition position:1.5",
       "-> mixer.setPlayProgress 1.5", "-> mixer.startMixingWithURL m.mp3 1 1 2"});
  expect(0, engine->pauseAudioMixing(), {"T pauseAudioMixing", "-> mixer.pause"});
  expect(0, engine->resumeAudioMixing(), {"T resumeAudioMixing", "-> mixer.resume"});
  expect(0, engine->stopAudioMixing(), {"T stopAudioMixing", "-> mixer.stop"});
  listen({"onAudioMixingPaused"});
  MainQueue::runPending();
  EXPECT_TRACE("R startAudioMixing callback:onAudioMixingStarted, code:0, " + keys,
               "host onAudioMixingStarted", "R pauseAudioMixing callback:onAudioMixingPaused, code:0, ",
               "R resumeAudioMixing callback:onAudioMixingResume, code:0, ", "host onAudioMixingResume",
               "R stopAudioMixing callback:onAudioMixingStopped, code:0, ", "host onAudioMixingStopped");

  sdk->mixer->accepts = false;
  expect(kBadParameter, engine->startAudioMixing("bad.mp3", 0, false, 1),
         {"T startAudioMixing url:bad.mp3,mode:0,playback:0,loop:1", "-> mixer.setDelegate engine",
          "-> mixer.startMixingWithURL bad.mp3 0 0 1"});
  EXPECT_EQ("bad.mp3", engine->audioMixingFileUrl());
  expect(3, engine->getAudioMixingDuration(), {"T getAudioMixingDuration"});
}

TEST_F(AudioTest, MixingVolumesReachTo100) {
  expect(0, engine->adjustAudioMixingVolume(100), {"T adjustAudioMixingVolume volume:100"});
  expect(0, engine->adjustAudioMixingPlaybackVolume(30), {"T adjustAudioMixingPlaybackVolume volume:30"});
  expect(100, engine->getAudioMixingPublishVolume(), {"T getAudioMixingPublishVolume"});
  expect(0, engine->adjustAudioMixingPublishVolume(40), {"T adjustAudioMixingPublishVolume volume:40"});
  expect(kBadParameter, engine->adjustAudioMixingPublishVolume(101),
         {"T adjustAudioMixingPublishVolume volume:101", "E: volume > 100"});
  expect(30, engine->getAudioMixingPlaybackVolume(), {"T getAudioMixingPlaybackVolume"});
  EXPECT_EQ(40, engine->getAudioMixingPublishVolume());
}

TEST_F(AudioTest, TheMixersEventsReachTheHostOnItsThread) {
  engine->startAudioMixing("m.mp3", 1, true, 1);
  MainQueue::runPending();
  trace->take();
  const auto mixer = sdk->mixer->events();
  mixer->didReportPlayingProgress(0.25F);
  EXPECT_TRACE("host onAudioMixingProgressReported 0.25");
  engine->setAudioMixingPosition(9);
  trace->take();
  expect(0.25, engine->getAudioMixingPosition(), {"T getAudioMixingPosition"});
  mixer->didAudioMixingStateChanged(2, 3);
  mixer->didAudioMixingStateChanged(1, 4);
  mixer->didAudioMixingStateChanged(2, 4);
  const std::string console = "C didAudioMixingStateChanged: ";
  EXPECT_TRACE(console + "2 , reason: 3", console + "1 , reason: 4", console + "2 , reason: 4",
               "L onAudioMixingFinished", "host onAudioMixingFinished");
}

}  // namespace
}  // namespace lumo
