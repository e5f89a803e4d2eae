#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace lumo {

/// A point in time, counted from the start of its timeline, or a span of time.
using Microseconds = std::chrono::microseconds;

/// Runs its tasks one after another: those whose time has come by time, then by posting. The posting
/// operations may be called on any thread, from within tasks too. Destroying a runner drops the tasks that
/// wait and waits for the one that runs, unless the runner is destroyed from within that very task. A runner
/// may outlive its timeline.
class Runner {
 public:
  using Task = std::function<void()>;

  virtual ~Runner() = default;

  /// Runs `task` as soon as possible, never inside the call.
  virtual void post(Task task) = 0;

  /// Runs `task` when the timeline has reached `time`; a time that has passed means now.
  virtual void postAt(Microseconds time, Task task) = 0;

  /// Whether the caller is one of this runner's tasks.
  virtual bool isCurrent() const = 0;
};

/// A clock, and the runners that go by it.
class Timeline {
 public:
  virtual ~Timeline() = default;

  /// Real time: a steady clock, and one thread for each runner.
  static std::shared_ptr<Timeline> realTime();

  /// Time that moves in `advance` only. All runners share one queue, which runs on the thread that advances.
  static std::shared_ptr<Timeline> manual();

  /// The time since the start of the timeline. Any thread.
  virtual Microseconds now() const = 0;

  /// @param name  shown by debuggers and system monitors as the thread's name, of which they keep 15
  /// characters
  virtual std::unique_ptr<Runner> makeRunner(std::string name) = 0;

  /// Moves manual time forward by `duration` and runs what falls due on the way, in order of time, then of
  /// posting, tasks included that other tasks post meanwhile. One thread at a time; from within a task it
  /// does nothing, and on a real timeline neither. What a task throws comes out of it; the tasks after that
  /// one wait for the next call.
  /// @param duration  at least 0; 0 runs what is due now
  /// @return the number of tasks run
  virtual std::size_t advance(Microseconds duration) = 0;
};

}  // namespace lumo
