#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

using Lines = std::vector<std::string>;

TEST(ManualTimelineTest, RunsWhatFallsDueByTimeThenByPosting) {
  const auto timeline = Timeline::manual();
  const auto one = timeline->makeRunner("one");
  auto two = timeline->makeRunner("two");
  Lines lines;
  const auto add = [&](const std::string& name) {
    lines.push_back(name + "@" + std::to_string(timeline->now().count()));
  };
  const auto note = [&add](const char* name) { return [&add, name] { add(name); }; };
  one->postAt(30us, note("late"));
  two->postAt(10us, note("first"));
  one->postAt(10us, note("second"));
  two->post([&] {
    add("now");
    EXPECT_TRUE(two->isCurrent() && !one->isCurrent());
    EXPECT_EQ(0u, timeline->advance(1s)) << "from within a task";
    one->post(note("nested"));
    one->postAt(20us, note("nested later"));
  });
  EXPECT_EQ(Lines(), lines) << "posting runs nothing";
  EXPECT_EQ(5u, timeline->advance(29us));
  one->post(note("today"));
  one->postAt(5us, note("overdue"));
  EXPECT_EQ(2u, timeline->advance(0us));
  EXPECT_EQ(1u, timeline->advance(1us));
  EXPECT_EQ((Lines{"now@0", "nested@0", "first@10", "second@10", "nested later@20", "today@29", "overdue@29",
                   "late@30"}),
            lines);
}

/// The rules of destruction hold on both timelines.
class RunnerDestructionTest : public testing::TestWithParam<bool> {
 protected:
  const std::shared_ptr<Timeline> timeline_ = GetParam() ? Timeline::realTime() : Timeline::manual();
};

TEST_P(RunnerDestructionTest, ATaskMayDestroyItsRunner) {
  auto runner = timeline_->makeRunner("self");
  const auto dropped = std::make_shared<bool>();
  std::promise<void> done;
  runner->post([&] {
    runner->post([dropped] { *dropped = true; });
    runner.reset();
    done.set_value();
  });
  timeline_->advance(1us);
  done.get_future().get();
  EXPECT_FALSE(*dropped);
  EXPECT_EQ(1, dropped.use_count()) << "the waiting task is gone";
}

TEST_P(RunnerDestructionTest, WhatATaskHoldsMayBeTheLastToOwnTheRunner) {
  struct Owner {
    std::unique_ptr<Runner> runner;
    std::promise<void> done;
    ~Owner() {
      runner.reset();
      done.set_value();
    }
  };
  auto owner = std::make_shared<Owner>();
  owner->runner = timeline_->makeRunner("owned");
  auto done = owner->done.get_future();
  Runner& runner = *owner->runner;
  std::promise<void> release;
  runner.post([future = release.get_future().share()] { future.get(); });
  runner.post([owner] {});
  owner.reset();
  release.set_value();
  timeline_->advance(1us);
  done.get();
}

TEST_P(RunnerDestructionTest, WaitsForTheTaskThatRunsOnAnotherThread) {
  auto runner = timeline_->makeRunner("busy");
  std::promise<void> started;
  std::promise<void> release;
  bool isDone = false;
  runner->post([&] {
    started.set_value();
    release.get_future().get();
    isDone = true;
  });
  std::thread pump([&] { timeline_->advance(1us); });
  started.get_future().get();
  std::thread helper([&] { release.set_value(); });
  runner.reset();
  EXPECT_TRUE(isDone);
  helper.join();
  pump.join();
}

INSTANTIATE_TEST_SUITE_P(Timelines, RunnerDestructionTest, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "RealTime" : "Manual"; });

TEST(RealTimelineTest, RunsTasksOneAtATime) {
  constexpr int kTasks = 200;
  const auto timeline = Timeline::realTime();
  std::promise<void> done;
  int count = 0;  // not atomic: a thread checker would notice two tasks at once
  const auto runner = timeline->makeRunner("serial");
  const auto post = [&] {
    for (int task = 0; task < kTasks; ++task) {
      runner->post([&] {
        if (++count == 2 * kTasks) done.set_value();
      });
    }
  };
  std::thread other(post);
  post();
  other.join();
  done.get_future().get();
}

TEST(RealTimelineTest, WaitsForTheTimeOfATask) {
  const auto timeline = Timeline::realTime();
  const auto runner = timeline->makeRunner("clock");
  std::promise<Lines> ran;
  Lines names;
  const Microseconds goal = timeline->now() + 20ms;
  runner->postAt(goal, [&] {
    EXPECT_GE(timeline->now(), goal);
    names.push_back("late");
    ran.set_value(names);
  });
  runner->postAt(goal - 10ms, [&] { names.push_back("early"); });
  EXPECT_EQ((Lines{"early", "late"}), ran.get_future().get());
  EXPECT_FALSE(runner->isCurrent());
  EXPECT_EQ(0u, timeline->advance(1s));
}

}  // namespace
}  // namespace lumo
