// What 10 ms of sound cost while files play: one mixed file and eight effects, all MP3.

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioEffectManager.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/media/AudioFilePlayer.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"
#include "benchmarks/AllocationCounter.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace std::chrono_literals;

std::string makeMusic(const lumo::test::TempFolder& folder) {
  return lumo::test::writeTones(folder, "music.mp3", {{440, 2}, {880, 2}});
}

/// What the audio clock has to do: play the files, mix them with the microphone, fill the speaker's block.
/// Decoding goes on beside the clock, and is not counted.
void audioClock(benchmark::State& state) {
  const lumo::test::TempFolder folder;
  const std::string music = makeMusic(folder);
  const auto timeline = lumo::Timeline::manual();
  const std::shared_ptr<lumo::Runner> decoding = timeline->makeRunner("decoding");
  const auto speaker = std::make_shared<lumo::Speaker>();
  const auto files =
      std::make_shared<lumo::FilePlayback>(std::make_shared<lumo::AudioExchange>(timeline), speaker);
  std::vector<std::shared_ptr<lumo::AudioFilePlayer>> players;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    players.push_back(lumo::AudioFilePlayer::open(decoding, music, 0).player);
    const auto voice = std::make_shared<lumo::FileVoice>(players.back(), [](auto&, auto) {});
    voice->setPublishGain(0.5);
    voice->setPlaybackGain(0.7);
    files->add(voice);
  }
  lumo::ToneSource microphone(300);
  lumo::AudioBlock block;
  lumo::Microseconds time{0};
  for (auto _ : state) {
    timeline->advance(0us);
    microphone.read(block);
    time += 10ms;
    const auto start = std::chrono::steady_clock::now();
    files->publish(block, time);
    files->audioTick(time);
    benchmark::DoNotOptimize(block);
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  std::uint64_t underruns = 0;
  for (const auto& player : players) underruns += player->underruns();
  state.counters["underruns"] = static_cast<double>(underruns);
}
BENCHMARK(audioClock)
    ->ArgName("files")
    ->Arg(0)
    ->Arg(1)
    ->Arg(9)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

/// All of it on one thread: decoding, the files' mix, progress reports, the speaker.
void everything(benchmark::State& state) {
  const lumo::test::TempFolder folder;
  const std::string music = makeMusic(folder);
  const auto local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});
  LMRTCEngine::sharedInstance()->initWithConfig(LMRTCConfig());
  const auto effects = LMRTCEngine::sharedInstance()->audioEffectManager();
  if (state.range(0) > 0) {
    LMRTCAudioMixer::sharedInstance()->startMixingWithURL(music, true, LMRTCMixerModeMix, 0);
  }
  for (std::int64_t i = 1; i < state.range(0); ++i) effects->playEffect(i, music, -1, true);
  local->advance(1s);
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) local->advance(10ms);
  allocations.report();
  local->uninstall();
}
BENCHMARK(everything)->ArgName("files")->Arg(0)->Arg(1)->Arg(9)->Unit(benchmark::kMicrosecond);

}  // namespace
