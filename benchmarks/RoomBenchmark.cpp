// What a room full of users costs the engine: the replay of who is there after joining, and the grouping of a
// long list of published streams into one report per user.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "benchmarks/AllocationCounter.h"
#include "benchmarks/TinySdk.h"

namespace {

using Streams = LMRTCRoomEventDelegate::Streams;

/// Each user has two streams.
Streams streamsOf(const LMRTCRoom& room) {
  Streams all;
  for (const auto& user : room.remoteUsers()) {
    for (auto& stream : user->remoteStreams()) all.push_back(std::move(stream));
  }
  return all;
}

/// A joined engine whose listener counts what it hears.
class FullRoom : public lumo::tiny::Call {
 public:
  explicit FullRoom(std::int64_t users) : room(std::make_shared<lumo::tiny::Room>(users)) {
    provider->engine->room = room;
    listener->onUserJoined = [this](const std::string&, const std::string&) { ++heard; };
    listener->onRemotePublished = [this](const std::string&, const std::string&, std::int64_t) { ++heard; };
    listener->onRemoteStateChanged = [this](const std::string&, const std::string&, std::int64_t, bool) {
      ++heard;
    };
    engine->setEngineDelegate(listener);
    join();
    heard = 0;
  }

  void join() const { engine->joinRoom("room", setup); }

  const std::shared_ptr<lumo::tiny::Room> room;
  const std::shared_ptr<LMRTCIWEngineDelegate> listener = std::make_shared<LMRTCIWEngineDelegate>();
  const std::shared_ptr<LMRTCIWRoomSetup> setup = std::make_shared<LMRTCIWRoomSetup>();
  std::int64_t heard = 0;
};

/// Runs `operation` over and over and reports the time of one user's share; fails unless each run calls the
/// listener `calls` times per user.
template <class Operation>
void measure(benchmark::State& state, std::int64_t calls, const std::int64_t& heard, Operation operation) {
  const std::int64_t users = state.range(0);
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) operation();
  allocations.report();
  if (heard != calls * users * state.iterations()) state.SkipWithError("the listener missed something");
  state.counters["per_user"] =
      benchmark::Counter(static_cast<double>(users),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void joinReplay(benchmark::State& state) {
  const FullRoom call(state.range(0));
  measure(state, 4, call.heard, [&call] { call.join(); });
}

void publishedStreams(benchmark::State& state) {
  const FullRoom call(state.range(0));
  const Streams streams = streamsOf(*call.room);
  const auto events = call.room->events();
  measure(state, 3, call.heard, [&] { events->didPublishStreams(streams); });
}

void streamGrouping(benchmark::State& state) {
  const lumo::tiny::Room room(state.range(0));
  const Streams streams = streamsOf(room);
  std::int64_t groups = 0;
  measure(state, 1, groups, [&] { groups += std::ssize(lumo::groupStreams(streams)); });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("users")->Arg(100)->Arg(1'000)->Arg(10'000);
}
BENCHMARK(joinReplay)->Apply(sizes);
BENCHMARK(publishedStreams)->Apply(sizes);
BENCHMARK(streamGrouping)->Apply(sizes);

}  // namespace
