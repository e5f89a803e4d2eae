#include "LumoRTCLocal/media/Timeline.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/util/LMIWFinallyLocked.h"

namespace lumo {
namespace {

using Clock = std::chrono::steady_clock;
using RunnerId = std::uint64_t;

/// Far beyond it, a point in time does not fit into the clock's numbers.
constexpr std::chrono::hours kLongestWait(1);

/// Whose task the thread is in; 0 outside of tasks.
thread_local RunnerId currentRunner = 0;

RunnerId nextRunnerId() {
  static std::atomic<RunnerId> last{0};
  return ++last;
}

class CurrentRunnerScope {
 public:
  explicit CurrentRunnerScope(RunnerId id) : outer_(std::exchange(currentRunner, id)) {}
  ~CurrentRunnerScope() { currentRunner = outer_; }
  CurrentRunnerScope(const CurrentRunnerScope&) = delete;
  CurrentRunnerScope& operator=(const CurrentRunnerScope&) = delete;

 private:
  const RunnerId outer_;
};

struct Entry {
  Microseconds time{0};
  std::uint64_t sequence = 0;
  RunnerId runner = 0;
  Runner::Task task;
};

/// Waiting tasks, the earliest first; of equal times the one posted first. Not synchronised.
class TaskHeap {
 public:
  void push(Microseconds time, RunnerId runner, Runner::Task task) {
    entries_.push_back({time, ++sequence_, runner, std::move(task)});
    std::ranges::push_heap(entries_, isLater);
  }

  bool isEmpty() const { return entries_.empty(); }
  Microseconds firstTime() const { return entries_.front().time; }

  Entry pop() {
    std::ranges::pop_heap(entries_, isLater);
    Entry entry = std::move(entries_.back());
    entries_.pop_back();
    return entry;
  }

  /// Takes the tasks of one runner out, for the caller to destroy outside of its lock.
  std::vector<Entry> remove(RunnerId runner) {
    const auto kept = std::partition(entries_.begin(), entries_.end(),
                                     [runner](const Entry& entry) { return entry.runner != runner; });
    std::vector<Entry> removed(std::make_move_iterator(kept), std::make_move_iterator(entries_.end()));
    entries_.erase(kept, entries_.end());
    std::ranges::make_heap(entries_, isLater);
    return removed;
  }

 private:
  static bool isLater(const Entry& a, const Entry& b) {
    return std::pair(a.time, a.sequence) > std::pair(b.time, b.sequence);
  }

  std::vector<Entry> entries_;
  std::uint64_t sequence_ = 0;
};

/// What a runner shares with its thread, which may outlive the runner when a task destroys it.
struct ThreadState {
  explicit ThreadState(Clock::time_point timelineStart) : start(timelineStart) {}

  Microseconds now() const { return std::chrono::duration_cast<Microseconds>(Clock::now() - start); }

  const RunnerId id = nextRunnerId();
  const Clock::time_point start;
  std::mutex mutex;
  std::condition_variable changed;
  TaskHeap heap;          // guarded by mutex
  bool stopping = false;  // guarded by mutex
};

/// Waits for the next task that is due; nothing when the runner is being destroyed.
std::optional<Entry> waitForTask(ThreadState& state) {
  std::unique_lock lock(state.mutex);
  while (!state.stopping) {
    if (state.heap.isEmpty()) {
      state.changed.wait(lock);
    } else if (const Microseconds time = state.heap.firstTime(); time > state.now()) {
      state.changed.wait_until(lock, state.start + std::min(time, state.now() + kLongestWait));
    } else {
      return state.heap.pop();
    }
  }
  return std::nullopt;
}

void runThread(const std::shared_ptr<ThreadState>& state, const std::string& name) {
  pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
  const CurrentRunnerScope scope(state->id);
  while (const auto entry = waitForTask(*state)) entry->task();
}

class ThreadRunner : public Runner {
 public:
  ThreadRunner(Clock::time_point start, std::string name)
      : state_(std::make_shared<ThreadState>(start)),
        thread_([state = state_, name = std::move(name)] { runThread(state, name); }) {}

  ~ThreadRunner() override {
    std::vector<Entry> dropped;
    {
      const std::lock_guard lock(state_->mutex);
      state_->stopping = true;
      dropped = state_->heap.remove(state_->id);
    }
    state_->changed.notify_one();
    if (isCurrent()) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

  void post(Task task) override { postAt(Microseconds::min(), std::move(task)); }

  void postAt(Microseconds time, Task task) override {
    const auto state = state_;  // the task may destroy the runner before this call is over
    {
      const std::lock_guard lock(state->mutex);
      state->heap.push(std::max(time, state->now()), state->id, std::move(task));
    }
    state->changed.notify_one();
  }

  bool isCurrent() const override { return currentRunner == state_->id; }

 private:
  const std::shared_ptr<ThreadState> state_;
  std::thread thread_;
};

class RealTimeline : public Timeline {
 public:
  Microseconds now() const override {
    return std::chrono::duration_cast<Microseconds>(Clock::now() - start_);
  }
  std::unique_ptr<Runner> makeRunner(std::string name) override {
    return std::make_unique<ThreadRunner>(start_, std::move(name));
  }
  std::size_t advance(Microseconds) override { return 0; }

 private:
  const Clock::time_point start_ = Clock::now();
};

/// What a manual timeline shares with its runners.
struct ManualState {
  std::mutex mutex;
  std::condition_variable taskDone;
  TaskHeap heap;  // guarded by mutex, as are the rest
  Microseconds now{0};
  RunnerId running = 0;  // whose task runs; 0: none
  bool advancing = false;
};

class ManualRunner : public Runner {
 public:
  explicit ManualRunner(std::shared_ptr<ManualState> state) : state_(std::move(state)) {}

  ~ManualRunner() override {
    std::vector<Entry> dropped;
    std::unique_lock lock(state_->mutex);
    dropped = state_->heap.remove(id_);
    if (!isCurrent()) state_->taskDone.wait(lock, [this] { return state_->running != id_; });
  }

  void post(Task task) override { postAt(Microseconds::min(), std::move(task)); }

  void postAt(Microseconds time, Task task) override {
    const auto state = state_;  // the task may destroy the runner before this call is over
    const std::lock_guard lock(state->mutex);
    state->heap.push(std::max(time, state->now), id_, std::move(task));
  }

  bool isCurrent() const override { return currentRunner == id_; }

 private:
  const RunnerId id_ = nextRunnerId();
  const std::shared_ptr<ManualState> state_;
};

class ManualTimeline : public Timeline {
 public:
  Microseconds now() const override {
    const std::lock_guard lock(state_->mutex);
    return state_->now;
  }

  std::unique_ptr<Runner> makeRunner(std::string) override { return std::make_unique<ManualRunner>(state_); }

  std::size_t advance(Microseconds duration) override {
    const auto state = state_;  // a task may destroy the timeline
    std::unique_lock lock(state->mutex);
    if (std::exchange(state->advancing, true)) return 0;
    const FinallyLocked advanced(lock, [&] { state->advancing = false; });
    const Microseconds end = state->now + duration;
    std::size_t count = 0;
    for (; !state->heap.isEmpty() && state->heap.firstTime() <= end; ++count) runFirst(*state, lock);
    state->now = end;
    return count;
  }

 private:
  static void runFirst(ManualState& state, std::unique_lock<std::mutex>& lock) {
    Entry entry = state.heap.pop();
    state.now = std::max(state.now, entry.time);
    state.running = entry.runner;
    const FinallyLocked done(lock, [&] {
      state.running = 0;
      state.taskDone.notify_all();
    });
    lock.unlock();
    const CurrentRunnerScope scope(entry.runner);
    const Runner::Task task = std::move(entry.task);  // what it holds may be the last to own its runner
    task();
  }

  const std::shared_ptr<ManualState> state_ = std::make_shared<ManualState>();
};

}  // namespace

std::shared_ptr<Timeline> Timeline::realTime() { return std::make_shared<RealTimeline>(); }

std::shared_ptr<Timeline> Timeline::manual() { return std::make_shared<ManualTimeline>(); }

}  // namespace lumo
