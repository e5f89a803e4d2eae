#include <gtest/gtest.h>

#include <future>
#include <stdexcept>

#include "LumoRTCLocal/media/Timeline.h"

namespace {

using namespace std::chrono_literals;
using lumo::Timeline;

TEST(ManualTimelineTest, RunsWhatFallsDueByTimeThenByPosting) {
  const auto timeline = Timeline::manual();
  const auto one = timeline->makeRunner("one");
  const auto two = timeline->makeRunner("two");
  std::string lines;
  const auto note = [&](const std::string& name) {
    return [&, name] { lines += name + "@" + std::to_string(timeline->now().count()) + " "; };
  };
  one->postAt(30us, note("late"));
  two->postAt(10us, note("first"));
  one->postAt(10us, note("second"));
  two->post([&] {
    EXPECT_TRUE(two->isCurrent() && !one->isCurrent() && timeline->advance(1s) == 0) << "within a task";
    one->post(note("nested"));
    one->postAt(20us, note("nested-later"));
  });
  EXPECT_EQ("", lines) << "posting runs nothing";
  EXPECT_EQ(5u, timeline->advance(29us));
  one->post(note("today"));
  one->postAt(5us, note("overdue"));
  EXPECT_EQ(3u, timeline->advance(1us));
  EXPECT_EQ("nested@0 first@10 second@10 nested-later@20 today@29 overdue@29 late@30 ", lines);
}

TEST(ManualTimelineTest, GoesOnAfterATaskThatThrows) {
  const auto timeline = Timeline::manual();
  const auto runner = timeline->makeRunner("one");
  int runs = 0;
  runner->postAt(1us, [] { throw std::runtime_error("from a host's callback"); });
  runner->postAt(1us, [&] { ++runs; });
  EXPECT_THROW(timeline->advance(2us), std::runtime_error);
  EXPECT_EQ(1u, timeline->advance(1us));
  EXPECT_EQ(1, runs);
}

TEST(RunnerTest, ATaskMayDestroyItsRunner) {
  for (const auto& timeline : {Timeline::realTime(), Timeline::manual()}) {
    auto runner = timeline->makeRunner("self");
    const auto waiting = std::make_shared<int>();
    std::promise<void> done;
    runner->post([&] {
      runner->post([waiting] { ADD_FAILURE() << "runs without its runner"; });
      runner.reset();
      done.set_value();
    });
    timeline->advance(1us);
    done.get_future().get();
    EXPECT_EQ(1, waiting.use_count()) << "the waiting task is gone";
  }
}

}  // namespace
