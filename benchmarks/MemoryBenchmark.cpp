// Whether memory stays flat: while a long file is published, and while streams are created, replaced and
// published again and again.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace std::chrono_literals;

/// A host in a room with one who receives all that it publishes, at manual pace.
struct Call {
  Call() {
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    lumo::Console::setSink({});
    delegate->onCustomStreamPublishFinished = [this](const std::string&) { ++finished; };
    engine->setEngineDelegate(delegate);
    anna->onVideo([this](const std::string&, const LMRTCVideoFrame&) { ++pictures; });
    anna->onAudio([this](const std::string&, const lumo::AudioBlock&, lumo::Microseconds) { ++blocks; });
    engine->joinRoom("r", std::make_shared<LMRTCIWRoomSetup>());
    local->advance(0us);
  }
  ~Call() {
    engine->destroy();
    local->uninstall();
  }

  std::shared_ptr<LumoRTCLocal> local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});
  std::shared_ptr<LMRTCIWEngineDelegate> delegate = std::make_shared<LMRTCIWEngineDelegate>();
  std::shared_ptr<LMRTCIWEngine> engine = LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>());
  std::shared_ptr<LumoRTCLocal::Participant> anna = local->join("r", "anna").participant;
  int finished = 0;
  double pictures = 0;
  double blocks = 0;
};

/// What the process holds at intervals, reported after the first one, after the last one, and at most
/// between.
class MemoryCurve {
 public:
  void sample() {
    const struct mallinfo2 heap = mallinfo2();
    heapKiB_.push_back(static_cast<double>(heap.uordblks + heap.hblkhd) / 1024);
    std::size_t total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    residentKiB_.push_back(static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024);
  }
  void report(benchmark::State& state) const {
    report(state, "heapKiB", heapKiB_);
    report(state, "residentKiB", residentKiB_);
  }

 private:
  static void report(benchmark::State& state, const std::string& name, const std::vector<double>& curve) {
    if (curve.empty()) return;
    state.counters[name + "First"] = curve.front();
    state.counters[name + "Last"] = curve.back();
    state.counters[name + "Most"] = *std::ranges::max_element(curve);
  }

  std::vector<double> heapKiB_;
  std::vector<double> residentKiB_;
};

/// Ten minutes of pictures and sound, as fast as they go; memory is looked at once a minute.
void longFile(benchmark::State& state, const char* name) {
  const lumo::test::TempFolder folder;
  const std::string path =
      lumo::test::writeClip(folder, name, {.pictures = 6000, .toneHz = 440, .toneSeconds = 600});
  MemoryCurve memory;
  for (auto _ : state) {
    Call call;
    call.engine->createCustomStreamFromFile(path, "long", false, true);
    call.engine->publishCustomStream("long");
    for (int minute = 0; minute < 9; ++minute) {
      call.local->advance(1min);
      memory.sample();
    }
    if (call.finished != 0) state.SkipWithError("the file has ended early");
    call.local->advance(2min);
    if (call.finished != 1) state.SkipWithError("the file has not ended");
    state.counters["pictures"] = call.pictures;
    state.counters["blocks"] = call.blocks;
  }
  memory.report(state);
}
BENCHMARK_CAPTURE(longFile, mov, "long.mov")->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK_CAPTURE(longFile, mkv, "long.mkv")->Iterations(1)->Unit(benchmark::kSecond);

/// A stream is created in place of the former one, published for 200 ms and unpublished, some thousand times;
/// memory is looked at after every tenth of them.
void manyStreams(benchmark::State& state) {
  const lumo::test::TempFolder folder;
  const std::string path = lumo::test::writeClip(folder, "a.mkv", {.pictures = 10, .toneHz = 440});
  MemoryCurve memory;
  for (auto _ : state) {
    Call call;
    for (std::int64_t round = 1; round <= state.range(0); ++round) {
      call.engine->createCustomStreamFromFile(path, "clip", round % 2 == 0, round % 3 == 0);
      call.engine->publishCustomStream("clip");
      call.local->advance(200ms);
      call.engine->unpublishCustomStream("clip");
      call.local->advance(10ms);
      if (round % (state.range(0) / 10) == 0) memory.sample();
    }
    state.counters["pictures"] = call.pictures;
  }
  memory.report(state);
}
BENCHMARK(manyStreams)->ArgName("rounds")->Arg(1000)->Arg(6000)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
