#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>

namespace lumo {

/// The application's main queue, to which the library posts the work that hosts expect on their main thread.
/// Tasks run one after another, in the order in which they were posted, never inside `async`. Every operation
/// may be called on any thread.
class MainQueue {
 public:
  /// Work that can be posted again and again without an allocation.
  class Work {
   public:
    virtual ~Work() = default;
    virtual void run() = 0;
  };

  /// What is posted: anything that can be called, or shared work.
  class Task {
   public:
    Task() = default;
    Task(std::shared_ptr<Work> work) : work_(std::move(work)) {}
    template <std::invocable Function>
    Task(Function function) : work_(std::make_shared<FunctionWork<Function>>(std::move(function))) {}

    void operator()() const {
      if (work_) work_->run();
    }

   private:
    template <class Function>
    struct FunctionWork final : Work {
      explicit FunctionWork(Function f) : function(std::move(f)) {}
      void run() override { function(); }
      Function function;
    };

    std::shared_ptr<Work> work_;
  };

  /// Runs a task later, on the host's main thread.
  using Executor = std::function<void(Task task)>;

  /// Posts `task`: to the executor if one is installed, else to the built-in queue.
  static void async(Task task);

  /// Installs the host's executor, for example one that posts to its UI loop. An empty one brings the
  /// built-in queue back. Tasks posted before stay where they are.
  static void setExecutor(Executor executor);

  /// Whether the built-in queue runs tasks on a thread of its own (the default) or leaves them to
  /// `runPending`.
  static void setOwnThread(bool enabled);

  /// Runs the tasks that wait in the built-in queue, those included that they post meanwhile, on the calling
  /// thread. Meant for hosts that have switched the own thread off; does nothing on a thread that is already
  /// running tasks. What a task throws comes out of the call; the tasks after that one wait for the next.
  /// @return the number of tasks run
  static std::size_t runPending();
};

}  // namespace lumo
