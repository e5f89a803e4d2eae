#include <gtest/gtest.h>

#include <future>
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

TEST(RunnerTest, ATaskMayDestroyItsRunner) {
  for (const auto& timeline : {Timeline::realTime(), Timeline::manual()}) {
    auto runner = timeline->makeRunner("self");
    const auto dropped = std::make_shared<bool>();
    std::promise<void> done;
    runner->post([&] {
      runner->post([dropped] { *dropped = true; });
      runner.reset();
      done.set_value();
    });
    timeline->advance(1us);
    done.get_future().get();
    EXPECT_FALSE(*dropped);
    EXPECT_EQ(1, dropped.use_count()) << "the waiting task is gone";
  }
}

}  // namespace
}  // namespace lumo
