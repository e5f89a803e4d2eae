// One picture of a live mix: n camera pictures composed into 1280 x 720.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "LumoRTCLocal/media/MixLayout.h"
#include "LumoRTCLocal/media/PictureMixer.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "benchmarks/AllocationCounter.h"

namespace {

constexpr std::int32_t kWidth = 1280;
constexpr std::int32_t kHeight = 720;

using Place = void (*)(std::size_t count, std::int32_t width, std::int32_t height,
                       std::vector<lumo::PixelRect>& places);

/// @param state  the number of publishers, then the size of their pictures
void mixPicture(benchmark::State& state, Place place, bool showWhole) {
  const auto publishers = static_cast<std::size_t>(state.range(0));
  const lumo::VideoFormat format{static_cast<std::int32_t>(state.range(1)),
                                 static_cast<std::int32_t>(state.range(2)), 30};
  std::vector<std::shared_ptr<const LumoRTCI420Buffer>> pictures;
  std::vector<lumo::PixelRect> places;
  place(publishers, kWidth, kHeight, places);
  std::vector<lumo::MixTile> tiles;
  for (std::size_t i = 0; i < publishers; ++i) {
    lumo::TestPictureSource source(static_cast<std::uint32_t>(i));
    pictures.push_back(source.frameAt(lumo::Microseconds(0), format));
    tiles.push_back({pictures.back().get(), 0, places[i]});
  }
  lumo::PictureMixer mixer;
  const lumo::MixCanvas canvas{kWidth, kHeight, lumo::YuvColor(), showWhole};
  mixer.mix(tiles, canvas);
  const lumo::AllocationCounter allocations(state);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(mixer.mix(tiles, canvas));
  allocations.report();
}

void withPublishers(benchmark::internal::Benchmark* run) {
  for (const auto& [width, height] : {std::pair(480, 640), std::pair(1280, 720)}) {
    for (const int publishers : {1, 4, 9, 16}) run->Args({publishers, width, height});
  }
  run->ArgNames({"publishers", "width", "height"})->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(mixPicture, GridCropped, &lumo::placeInGrid, false)->Apply(withPublishers);
BENCHMARK_CAPTURE(mixPicture, GridWhole, &lumo::placeInGrid, true)->Apply(withPublishers);
BENCHMARK_CAPTURE(mixPicture, Suspended, &lumo::placeSuspended, false)->Apply(withPublishers);

}  // namespace
