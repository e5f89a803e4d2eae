#include <functional>

#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using AudioTest = EngineTest;

TEST_F(AudioTest, EffectsNeedARoomAndAnIdThatWasCreated) {
  using Engine = LMRTCIWEngine;
  struct Call {
    std::function<std::int64_t(Engine&)> call;
    std::string entry;
    std::string sent;
    std::int64_t answer = 0;
  };
  std::vector<Call> calls = {
      {[](Engine& e) { return e.playAudioEffect(7, 150, -1); },
       "playAudioEffect effectId:7,volume:150,loop:-1,",
       "sdk playEffect 7 a.wav -1 1\nsdk setVolumeOfEffect 7 150"},
      {[](Engine& e) { return e.pauseAudioEffect(7); }, "pauseAudioEffect effectId:7", "sdk pauseEffect 7"},
      {[](Engine& e) { return e.resumeAudioEffect(7); }, "resumeAudioEffect effectId:7",
       "sdk resumeEffect 7"},
      {[](Engine& e) { return e.stopAudioEffect(7); }, "stopAudioEffect", "sdk stopEffect 7"},
      {[](Engine& e) { return e.getAudioEffectVolume(7); }, "getAudioEffectVolume effectId:7", "", 77},
  };
  const std::vector<Call> ofAll = {
      {[](Engine& e) { return e.pauseAllAudioEffects(); }, "pauseAllAudioEffects", "sdk pauseAllEffects"},
      {[](Engine& e) { return e.resumeAllAudioEffects(); }, "resumeAllAudioEffects", "sdk resumeAllEffects"},
      {[](Engine& e) { return e.stopAllAudioEffects(); }, "stopAllAudioEffects", "sdk stopAllEffects"},
      {[](Engine& e) { return e.adjustAllAudioEffectsVolume(200); }, "adjustAllAudioEffectsVolume volume:200",
       "sdk setEffectsVolume 200"},
      {[](Engine& e) { return e.getAllAudioEffectsVolume(); }, "getAllAudioEffectsVolume", "", 60},
      {[](Engine& e) { return e.createAudioEffect("a.wav", 7); }, "createAudioEffect url:a.wav,effectId:7",
       ""},
      {[](Engine& e) { return e.adjustAudioEffect(7, 101); }, "adjustAudioEffect effectId:7,volume:101",
       "sdk setVolumeOfEffect 7 101"},
  };
  refuse(kNotJoined, calls, kNoUser);
  refuse(kNotJoined, ofAll, kNoUser);
  expect(kNotJoined, engine->releaseAudioEffect(7), {"T releaseAudioEffect effectId:7", kNoUser});
  join();
  refuse(kBadParameter, calls, "E: effectSoundIdDict error");
  expect(kBadParameter, engine->adjustAudioEffect(7, 101),
         {"T adjustAudioEffect effectId:7,volume:101", "E: effectSoundIdDict error or volume < 0"});
  calls.insert(calls.begin(), ofAll.begin(), ofAll.end());
  for (const auto& c : calls) {
    expect(c.answer, c.call(*engine), c.sent.empty() ? Lines{"T " + c.entry} : Lines{"T " + c.entry, c.sent});
  }
}

TEST_F(AudioTest, EffectIdsAreCreatedOnceAndReleased) {
  join();
  expect(kBadParameter, engine->createAudioEffect(std::nullopt, 1),
         {"T createAudioEffect url:(null),effectId:1", "E: url is nil"});
  expect(0, engine->createAudioEffect("a.wav", 1), {"T createAudioEffect url:a.wav,effectId:1"});
  expect(kBadParameter, engine->createAudioEffect("b.wav", 1), {"T createAudioEffect url:b.wav,effectId:1"});
  EXPECT_EQ("a.wav", engine->effectSoundIdDict().at(1));
  MainQueue::runPending();
  EXPECT_TRACE("R createAudioEffect callback:onAudioEffectCreated, code:0, url:a.wav,effectId:1",
               "host onAudioEffectCreated 1 0 ");
  expect(0, engine->releaseAudioEffect(1), {"T releaseAudioEffect effectId:1"});
  expect(kBadParameter, engine->releaseAudioEffect(1), {"T releaseAudioEffect effectId:1"});
}

TEST_F(AudioTest, MixingStartsAndReportsOnTheMainQueue) {
  EXPECT_EQ(kBadParameter, engine->getAudioMixingDuration());
  trace->take();
  const std::string first = "url:m.mp3,mode:5,playback:1,loop:2";
  const std::string second = "url:m.mp3,mode:0,playback:0,loop:0,position:1.5";
  expect(0, engine->startAudioMixing("m.mp3", 5, true, 2),
         {"T startAudioMixing " + first, "sdk mixer.setDelegate engine",
          "sdk mixer.startMixingWithURL m.mp3 1 1 2"});
  expect(0, engine->startAudioMixing("m.mp3", 0, false, 0, 1.5),
         {"T startAudioMixing " + second, "sdk mixer.setDelegate engine",
          "T setAudioMixingPosition position:1.5", "sdk mixer.setPlayProgress 1.5",
          "sdk mixer.startMixingWithURL m.mp3 0 0 0"});
  expect(0, engine->pauseAudioMixing(), {"T pauseAudioMixing", "sdk mixer.pause"});
  expect(0, engine->resumeAudioMixing(), {"T resumeAudioMixing", "sdk mixer.resume"});
  expect(0, engine->stopAudioMixing(), {"T stopAudioMixing", "sdk mixer.stop"});
  listen({"onAudioMixingPaused"});
  MainQueue::runPending();
  EXPECT_TRACE("R startAudioMixing callback:onAudioMixingStarted, code:0, " + first,
               "host onAudioMixingStarted",
               "R startAudioMixing callback:onAudioMixingStarted, code:0, " + second,
               "host onAudioMixingStarted", "R pauseAudioMixing callback:onAudioMixingPaused, code:0, ",
               "R resumeAudioMixing callback:onAudioMixingResume, code:0, ", "host onAudioMixingResume",
               "R stopAudioMixing callback:onAudioMixingStopped, code:0, ", "host onAudioMixingStopped");

  sdk->mixer->accepts = false;
  EXPECT_EQ(kBadParameter, engine->startAudioMixing("bad.mp3", 1, true, 1));
  EXPECT_EQ("bad.mp3", engine->audioMixingFileUrl());
  MainQueue::runPending();
  EXPECT_EQ(std::string::npos, trace->take().find("host"));
  expect(3, engine->getAudioMixingDuration(), {"T getAudioMixingDuration"});
}

TEST_F(AudioTest, MixingVolumesReachTo100) {
  expect(0, engine->adjustAudioMixingVolume(100), {"T adjustAudioMixingVolume volume:100"});
  expect(0, engine->adjustAudioMixingPlaybackVolume(30), {"T adjustAudioMixingPlaybackVolume volume:30"});
  expect(100, engine->getAudioMixingPublishVolume(), {"T getAudioMixingPublishVolume"});
  expect(0, engine->adjustAudioMixingPublishVolume(40), {"T adjustAudioMixingPublishVolume volume:40"});
  const std::string bad = "E: volume > 100";
  expect(kBadParameter, engine->adjustAudioMixingVolume(101), {"T adjustAudioMixingVolume volume:101", bad});
  expect(kBadParameter, engine->adjustAudioMixingPlaybackVolume(101),
         {"T adjustAudioMixingPlaybackVolume volume:101", bad});
  expect(kBadParameter, engine->adjustAudioMixingPublishVolume(101),
         {"T adjustAudioMixingPublishVolume volume:101", bad});
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
  const std::string console = "console LMRTCIWEngine didAudioMixingStateChanged: ";
  mixer->didAudioMixingStateChanged(2, 3);
  mixer->didAudioMixingStateChanged(1, 4);
  EXPECT_TRACE(console + "2 , reason: 3", console + "1 , reason: 4");
  mixer->didAudioMixingStateChanged(2, 4);
  EXPECT_TRACE(console + "2 , reason: 4", "L onAudioMixingFinished", "host onAudioMixingFinished");
  engine->destroy();
  EXPECT_EQ(0, engine->audioMixPlayProgress());
  EXPECT_EQ(std::nullopt, engine->audioMixingFileUrl());
}

}  // namespace
}  // namespace lumo
