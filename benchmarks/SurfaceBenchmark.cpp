// What a frame costs on its way into the surfaces, and a block of sound on its way to an observer.

#include <benchmark/benchmark.h>
#include <libyuv/convert_argb.h>
#include <libyuv/rotate.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <thread>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWMediaObservers.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/media/FrameWrapper.h"
#include "benchmarks/AllocationCounter.h"
#include "benchmarks/TinySdk.h"

namespace {

using Picture = std::shared_ptr<LumoRTCI420Buffer>;

/// A picture whose bytes are all different enough for the converters.
Picture noise(std::int32_t width, std::int32_t height) {
  auto picture = LumoRTCI420Buffer::create(width, height);
  std::uint32_t state = 1;
  const auto next = [&state] {
    return static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  };
  std::generate_n(picture->mutableDataY(), width * height, next);
  std::generate_n(picture->mutableDataU(), picture->chromaWidth() * picture->chromaHeight(), next);
  std::generate_n(picture->mutableDataV(), picture->chromaWidth() * picture->chromaHeight(), next);
  return picture;
}

/// Processor time of this thread, so that neighbours on a busy machine count less.
double threadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class Work>
double secondsOf(Work work) {
  const double start = threadSeconds();
  work();
  return threadSeconds() - start;
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

/// libyuv as it is meant to be used: into a rotated picture, then into pixels, both kept from frame to frame.
class PlainPath {
 public:
  PlainPath(const LumoRTCI420Buffer& picture, std::int32_t rotation)
      : rotation_(static_cast<libyuv::RotationMode>(rotation)),
        turned_(rotation % 180 == 0 ? LumoRTCI420Buffer::create(picture.width(), picture.height())
                                    : LumoRTCI420Buffer::create(picture.height(), picture.width())),
        pixels_(CVPixelBuffer::createBGRA(static_cast<std::size_t>(turned_->width()),
                                          static_cast<std::size_t>(turned_->height()), {})) {}

  void convert(const LumoRTCI420Buffer& picture) {
    libyuv::I420Rotate(picture.dataY(), picture.strideY(), picture.dataU(), picture.strideU(),
                       picture.dataV(), picture.strideV(), turned_->mutableDataY(), turned_->strideY(),
                       turned_->mutableDataU(), turned_->strideU(), turned_->mutableDataV(),
                       turned_->strideV(), picture.width(), picture.height(), rotation_);
    libyuv::I420ToARGB(turned_->dataY(), turned_->strideY(), turned_->dataU(), turned_->strideU(),
                       turned_->dataV(), turned_->strideV(), pixels_->baseAddress(),
                       static_cast<int>(pixels_->bytesPerRow()), turned_->width(), turned_->height());
  }

  const CVPixelBuffer& size() const { return *pixels_; }
  std::uint8_t* pixels() { return pixels_->baseAddress(); }

 private:
  const libyuv::RotationMode rotation_;
  const Picture turned_;
  const CVPixelBufferRef pixels_;
};

/// A frame into the texture beside libyuv alone, by turns; what is reported is the median of each and their
/// ratio.
void textureFrame(benchmark::State& state) {
  const auto local = LumoRTCLocal::install({.pace = LumoRTCLocal::Pace::manual});
  lumo::MainQueue::setExecutor([](const lumo::MainQueue::Task&) {});
  const auto rotation = static_cast<std::int32_t>(state.range(2));
  const auto picture =
      noise(static_cast<std::int32_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)));
  const LMRTCVideoFrame frame = lumo::FrameWrapper().wrap(picture, lumo::Microseconds(0), rotation);
  PlainPath plain(*picture, rotation);
  const auto view = LMRTCIWFlutterView::create();
  view->setSize(static_cast<double>(plain.size().width()), static_cast<double>(plain.size().height()));
  plain.convert(*picture);
  view->renderFrame(frame);
  const std::size_t bytes = plain.size().width() * plain.size().height() * 4;
  if (!std::equal(plain.pixels(), plain.pixels() + bytes, view->pixelBufferRef()->baseAddress()))
    state.SkipWithError("the pixels differ");

  std::vector<double> plainSeconds, viewSeconds;
  plainSeconds.reserve(1 << 20);
  viewSeconds.reserve(1 << 20);
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) {
    plainSeconds.push_back(secondsOf([&] { plain.convert(*picture); }));
    viewSeconds.push_back(secondsOf([&] { view->renderFrame(frame); }));
    state.SetIterationTime(viewSeconds.back());
  }
  allocations.report();
  const double plainMedian = median(plainSeconds);
  const double viewMedian = median(viewSeconds);
  state.counters["plain_us"] = plainMedian * 1e6;
  state.counters["view_us"] = viewMedian * 1e6;
  state.counters["ratio"] = viewMedian / plainMedian;
  lumo::MainQueue::setExecutor({});
}
BENCHMARK(textureFrame)
    ->ArgNames({"width", "height", "rotation"})
    ->ArgsProduct({{640}, {360}, {0, 90, 180, 270}})
    ->ArgsProduct({{1280}, {720}, {0, 90, 180, 270}})
    ->ArgsProduct({{1920}, {1080}, {0, 90, 180, 270}})
    ->ArgsProduct({{3840}, {2160}, {0, 90, 180, 270}})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

/// Frames through the queue, one thread on each side; every batch is drained before the next.
void queuedFrames(benchmark::State& state) {
  constexpr std::int64_t kBatch = 1000;
  const auto picture = noise(1280, 720);
  const LMRTCVideoFrame frame = lumo::FrameWrapper().wrap(picture, lumo::Microseconds(0));
  const auto view = LMRTCIWUnityView::create();
  std::atomic<std::int64_t> taken{0};
  std::atomic<std::int64_t> copied{0};
  std::jthread host([&](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const auto next = view->getCurrentFrame();
      if (!next) {
        std::this_thread::yield();
        continue;
      }
      if (next->dataY() != picture->dataY()) ++copied;
      ++taken;
    }
  });
  std::int64_t sent = 0;
  const lumo::AllocationCounter allocations(state);
  while (state.KeepRunningBatch(kBatch)) {
    for (std::int64_t i = 0; i < kBatch; ++i) view->renderFrame(frame);
    sent += kBatch;
    while (taken < sent) std::this_thread::yield();
  }
  allocations.report();
  state.SetItemsProcessed(sent);
  state.counters["copies"] = static_cast<double>(copied);
}
BENCHMARK(queuedFrames)->UseRealTime();

/// A block of captured sound through the engine to the host's observer.
void observedBlock(benchmark::State& state) {
  LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
  lumo::Console::setSink({});
  const auto provider = std::make_shared<lumo::tiny::Provider>();
  LMRTCProvider::install(provider);
  const auto engine = LMRTCIWEngine::create();
  const auto observer = std::make_shared<LMRTCIWAudioFrameDelegate>();
  observer->onAudioFrame = [](LMRTCIWAudioFrame frame) { benchmark::DoNotOptimize(frame); };
  engine->setLocalAudioCapturedDelegate(observer);
  const std::vector<std::uint8_t> samples(1920);
  const LMRTCAudioData block{.bytes = samples.data(),
                             .length = 1920,
                             .channels = 2,
                             .sampleRate = 48000,
                             .bytesPerSample = 2,
                             .samples = 480,
                             .renderTimeMs = 10};
  const auto& callback = provider->engine->microphone()->recorded();
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) callback(block);
  allocations.report();
  engine->destroy();
  LMRTCProvider::install(nullptr);
}
BENCHMARK(observedBlock);

}  // namespace
