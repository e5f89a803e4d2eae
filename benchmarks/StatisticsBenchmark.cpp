// What the engine makes of one status form, and of one report of live audio levels, in a full room with ten
// sub-rooms.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "benchmarks/AllocationCounter.h"
#include "benchmarks/TinySdk.h"

namespace {

constexpr std::int64_t kSubRooms = 10;

/// An engine in a room of that many users and in sub-rooms with a tenth of them each, whose stats listener
/// counts what it hears.
class ReportedCall : public lumo::tiny::Call {
 public:
  explicit ReportedCall(std::int64_t users) : users_(users) {
    provider->engine->room = std::make_shared<lumo::tiny::Room>(users);
    engine->joinRoom("room", std::make_shared<LMRTCIWRoomSetup>());
    for (std::int64_t i = 0; i < kSubRooms; ++i) {
      const std::string roomId = "sub-" + std::to_string(i);
      const std::int64_t size = users / kSubRooms;
      provider->engine->otherRooms[roomId] =
          std::make_shared<lumo::tiny::OtherRoom>(roomId, users + i * size, size);
      engine->joinSubRoom(roomId);
    }
    listener_->onRemoteAudioStats = [this](const auto&, const auto&, const auto&) { ++heard; };
    listener_->onRemoteVideoStats = [this](const auto&, const auto&, const auto&) { ++heard; };
    listener_->onLiveMixMemberAudioStats = [this](const auto&, std::int64_t) { ++heard; };
    engine->setStatsDelegate(listener_);
  }

  /// As many received streams as the main room has users, two of a user, half of the users in sub-rooms.
  LMRTCStatusForm form() const {
    LMRTCStatusForm form;
    for (std::int64_t i = 0; i < users_ / 2; ++i) {
      for (const auto* const media : {LumoRTCMediaTypeAudio, LumoRTCMediaTypeVideo}) {
        LMRTCStreamStatus status;
        status.mediaType = media;
        status.codecName = "opus";
        status.userId = lumo::tiny::userId(2 * i % users_ + i % 2 * users_);
        status.streamId = status.userId + "_" + kLMRTCDefaultStreamTag;
        form.recvStats.push_back(status);
      }
    }
    return form;
  }

  /// The levels of every second user of the main room; the engine adds everybody else.
  std::vector<LMRTCLiveAudioStatus> levels() const {
    std::vector<LMRTCLiveAudioStatus> levels(static_cast<std::size_t>(users_ / 2));
    for (std::int64_t i = 0; i < std::ssize(levels); ++i) {
      const std::string userId = lumo::tiny::userId(2 * i);
      levels[static_cast<std::size_t>(i)].updateUserId(userId, userId + "_" + kLMRTCDefaultStreamTag);
    }
    return levels;
  }

  std::int64_t heard = 0;

 private:
  const std::int64_t users_;
  const std::shared_ptr<LMRTCIWStatsDelegate> listener_ = std::make_shared<LMRTCIWStatsDelegate>();
};

/// Runs `report` over and over, which has to reach the listener `entries` times, and reports the time of one
/// entry.
template <class Report>
void measure(benchmark::State& state, const ReportedCall& call, std::int64_t entries, Report report) {
  const lumo::AllocationCounter allocations(state);
  for (auto _ : state) report();
  allocations.report();
  if (call.heard != entries * state.iterations()) state.SkipWithError("the listener missed something");
  state.counters["per_entry"] =
      benchmark::Counter(static_cast<double>(entries),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void statusForm(benchmark::State& state) {
  const ReportedCall call(state.range(0));
  const auto reports = call.provider->engine->reports();
  const LMRTCStatusForm form = call.form();
  measure(state, call, std::ssize(form.recvStats), [&] { reports->didReportStatusForm(form); });
}

void liveAudioReport(benchmark::State& state) {
  const ReportedCall call(state.range(0));
  const auto reports = call.provider->engine->reports();
  const auto levels = call.levels();
  measure(state, call, 2 * state.range(0), [&] { reports->didReportLiveAudioStatus(levels); });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("users")->Arg(100)->Arg(1'000)->Arg(10'000);
}
BENCHMARK(statusForm)->Apply(sizes);
BENCHMARK(liveAudioReport)->Apply(sizes);

}  // namespace
