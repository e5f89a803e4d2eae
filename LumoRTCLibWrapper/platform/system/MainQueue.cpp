#include "LumoRTCLibWrapper/platform/system/MainQueue.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWFinallyLocked.h"
#include "LumoRTCLibWrapper/util/LMIWRing.h"

namespace lumo {
namespace {

/// The built-in queue. Its thread starts with the first task and ends with the process.
class BuiltInQueue {
 public:
  static BuiltInQueue& instance() {
    static BuiltInQueue queue;
    return queue;
  }

  ~BuiltInQueue() {
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
  }

  void post(MainQueue::Task task) {
    {
      const std::lock_guard lock(mutex_);
      tasks_.pushBack(std::move(task));
      if (ownThread_ && !thread_.joinable()) thread_ = std::thread([this] { runThread(); });
    }
    changed_.notify_all();
  }

  void setOwnThread(bool enabled) {
    {
      const std::lock_guard lock(mutex_);
      ownThread_ = enabled;
      if (ownThread_ && !tasks_.empty() && !thread_.joinable())
        thread_ = std::thread([this] { runThread(); });
    }
    changed_.notify_all();
  }

  std::size_t runPending() {
    std::unique_lock lock(mutex_);
    if (running_ && runner_ == std::this_thread::get_id()) return 0;
    changed_.wait(lock, [this] { return !running_; });
    return drain(lock);
  }

 private:
  void runThread() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
      changed_.wait(lock, [this] { return stopping_ || (ownThread_ && !running_ && !tasks_.empty()); });
      if (!stopping_) drain(lock);
    }
  }

  /// Runs tasks until none waits. One thread at a time, so that tasks never overlap; the lock is open while
  /// one runs.
  std::size_t drain(std::unique_lock<std::mutex>& lock) {
    running_ = true;
    const FinallyLocked drained(lock, [this] {
      running_ = false;
      changed_.notify_all();
    });
    runner_ = std::this_thread::get_id();
    std::size_t count = 0;
    for (; !tasks_.empty() && !stopping_; ++count) {
      auto task = tasks_.popFront();
      lock.unlock();
      task();
      task = {};
      lock.lock();
    }
    return count;
  }

  std::mutex mutex_;  ///< guards everything below
  std::condition_variable changed_;
  Ring<MainQueue::Task> tasks_;
  std::thread thread_;
  std::thread::id runner_;  ///< who drains, while running_
  bool running_ = false;
  bool ownThread_ = true;
  bool stopping_ = false;
};

Cell<std::shared_ptr<const MainQueue::Executor>>& executorCell() {
  static Cell<std::shared_ptr<const MainQueue::Executor>> cell;
  return cell;
}

}  // namespace

void MainQueue::async(Task task) {
  if (const auto executor = executorCell().get()) {
    (*executor)(std::move(task));
  } else {
    BuiltInQueue::instance().post(std::move(task));
  }
}

void MainQueue::setExecutor(Executor executor) {
  executorCell().set(executor ? std::make_shared<const Executor>(std::move(executor)) : nullptr);
}

void MainQueue::setOwnThread(bool enabled) { BuiltInQueue::instance().setOwnThread(enabled); }

std::size_t MainQueue::runPending() { return BuiltInQueue::instance().runPending(); }

}  // namespace lumo
