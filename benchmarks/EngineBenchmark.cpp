// One synchronous operation of the engine beside the same calls made directly on the SDK's objects.

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <mutex>

#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "benchmarks/AllocationCounter.h"
#include "benchmarks/TinySdk.h"

namespace {

enum Log : std::int64_t { off, intoMemory };

/// Keeps the newest lines, in memory that is used again and again.
class MemorySink {
 public:
  MemorySink() {
    for (LMFwLogEntry& line : lines_) {
      line.tag.reserve(64);
      line.keys.reserve(64);
    }
  }

  void add(const LMFwLogEntry& entry) {
    const std::lock_guard lock(mutex_);
    lines_[next_++ % lines_.size()] = entry;
  }

 private:
  std::mutex mutex_;
  std::size_t next_ = 0;
  std::array<LMFwLogEntry, 256> lines_;
};

/// An engine on the tiny SDK, and where its log lines go.
class LoggedCall : public lumo::tiny::Call {
 public:
  explicit LoggedCall(std::int64_t log) {
    LMFwLog::getInstance().setThreshold(log == off ? LMFwLogLevelOff : LMFwLogLevelInfo);
    LMFwLog::getInstance().setSink(
        [sink = std::make_shared<MemorySink>()](const LMFwLogEntry& entry) { sink->add(entry); });
  }
  ~LoggedCall() { LMFwLog::getInstance().setSink({}); }
};

template <class Operation>
void measure(benchmark::State& state, Operation operation) {
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) operation();
  allocations.report();
}

void setAudioConfigOnSdk(benchmark::State& state) {
  const std::shared_ptr<LMRTCAudioOutputStream> microphone = std::make_shared<lumo::tiny::Microphone>();
  measure(state, [stream = microphone.get()]() mutable {
    benchmark::DoNotOptimize(stream);
    stream->setAudioQuality(1, 2);
    stream->setRecordingVolume(80);
  });
}
BENCHMARK(setAudioConfigOnSdk);

void setAudioConfigOnEngine(benchmark::State& state) {
  const LoggedCall call(state.range(0));
  const LMRTCIWAudioConfig config{.quality = 1, .scenario = 2, .recordingVolume = 80};
  measure(state, [&] { benchmark::DoNotOptimize(call.engine->setAudioConfig(&config)); });
}
BENCHMARK(setAudioConfigOnEngine)->ArgName("log")->Arg(off)->Arg(intoMemory);

void muteOnSdk(benchmark::State& state) {
  const std::shared_ptr<LMRTCAudioOutputStream> microphone = std::make_shared<lumo::tiny::Microphone>();
  measure(state, [stream = microphone.get()]() mutable {
    benchmark::DoNotOptimize(stream);
    stream->setIsMute(true);
  });
}
BENCHMARK(muteOnSdk);

void muteOnEngine(benchmark::State& state) {
  const LoggedCall call(state.range(0));
  measure(state,
          [&] { benchmark::DoNotOptimize(call.engine->muteLocalStream(LMRTCIWMediaTypeAudio, true)); });
}
BENCHMARK(muteOnEngine)->ArgName("log")->Arg(off)->Arg(intoMemory);

}  // namespace
