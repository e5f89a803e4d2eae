// One picture on its way from a participant's camera to the view that shows it, on LumoRTCLocal at manual
// pace.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "benchmarks/AllocationCounter.h"

namespace {

using namespace std::chrono_literals;

constexpr std::int32_t kFramesPerSecond = 25;
constexpr auto kFrame = lumo::Microseconds(1s) / kFramesPerSecond;

lumo::VideoFormat formatOf(const benchmark::State& state) {
  return {.width = static_cast<std::int32_t>(state.range(0)),
          .height = static_cast<std::int32_t>(state.range(1)),
          .framesPerSecond = kFramesPerSecond};
}

/// A joined engine, and a participant whose camera is on.
class Call {
 public:
  explicit Call(const lumo::VideoFormat& format) {
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    lumo::Console::setSink({});
    engine_ = LMRTCIWEngine::create();
    anna_ = local->join("room", "anna", {.video = format}).participant;
    anna_->publishVideo();
    engine_->joinRoom("room", std::make_shared<LMRTCIWRoomSetup>());
    local->advance(0us);
  }
  ~Call() {
    engine_->destroy();
    local->uninstall();
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// Subscribes to the participant and binds a view of that size.
  std::shared_ptr<lumo::LocalVideoView> show(std::int32_t width, std::int32_t height) {
    view_ = LMRTCIWView::create(UIRect{0, 0, static_cast<double>(width), static_cast<double>(height)});
    engine_->subscribe("anna", LMRTCIWMediaTypeVideo);
    engine_->setRemoteView(view_, "anna");
    return std::dynamic_pointer_cast<lumo::LocalVideoView>(view_->rtcVideoView());
  }

  const std::shared_ptr<LumoRTCLocal> local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});

 private:
  std::shared_ptr<LMRTCIWEngine> engine_;
  std::shared_ptr<LumoRTCLocal::Participant> anna_;
  std::shared_ptr<LMRTCIWView> view_;
};

/// What the call does in the time of one picture without any: the clock moves, silence is mixed.
void callWithoutPictures(benchmark::State& state) {
  const Call call(formatOf(state));
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) call.local->advance(kFrame);
  allocations.report();
}

/// Drawing the test picture alone, which stands in for a camera.
void testPicture(benchmark::State& state) {
  lumo::TestPictureSource source(1);
  lumo::Microseconds time{0};
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(source.frameAt(time += kFrame, formatOf(state)));
  allocations.report();
}

/// From the capture to the bound view. The counter "copies" says how many buffers of pixels the first picture
/// took beside the one that it was captured into; later pictures use the same buffers again.
void captureToView(benchmark::State& state) {
  Call call(formatOf(state));
  const std::size_t buffersBefore = largeAllocationCount();
  const auto view = call.show(formatOf(state).width, formatOf(state).height);
  while (view->frameCount() == 0) call.local->advance(1ms);
  const std::size_t buffers = largeAllocationCount() - buffersBefore;
  for (int i = 0; i < 5; ++i) call.local->advance(kFrame);

  const std::uint64_t framesBefore = view->frameCount();
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) call.local->advance(kFrame);
  allocations.report();
  state.counters["copies"] = static_cast<double>(buffers) - 1;
  if (view->frameCount() - framesBefore != static_cast<std::uint64_t>(state.iterations())) {
    state.SkipWithError("not every picture arrived");
  }
}

/// The same, and the view's pixels are drawn for each picture.
void captureToDrawnView(benchmark::State& state) {
  Call call(formatOf(state));
  const auto view = call.show(formatOf(state).width, formatOf(state).height);
  call.local->advance(5 * kFrame);
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) {
    call.local->advance(kFrame);
    benchmark::DoNotOptimize(view->snapshot());
  }
  allocations.report();
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"width", "height"})
      ->Args({640, 480})
      ->Args({1280, 720})
      ->Unit(benchmark::kMicrosecond);
}
BENCHMARK(callWithoutPictures)->Apply(sizes);
BENCHMARK(testPicture)->Apply(sizes);
BENCHMARK(captureToView)->Apply(sizes);
BENCHMARK(captureToDrawnView)->Apply(sizes);

}  // namespace
