#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

#include "tests/support/AllocationCount.h"

namespace lumo {

/// Counts what a benchmark's loop allocates: make one right before the loop, call `report` right after it.
class AllocationCounter {
 public:
  explicit AllocationCounter(benchmark::State& state) : state_(state) {}

  /// Adds the counter "allocations": calls of operator new on all threads per iteration.
  void report() const {
    const std::size_t count = allocationCount() - before_;
    state_.counters["allocations"] =
        benchmark::Counter(static_cast<double>(count), benchmark::Counter::kAvgIterations);
  }

 private:
  benchmark::State& state_;
  const std::size_t before_ = allocationCount();
};

}  // namespace lumo
