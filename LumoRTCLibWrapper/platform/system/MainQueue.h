#pragma once

#include <cstddef>
#include <functional>

namespace lumo {

/// The application's main queue, to which the library posts the work that hosts expect on their main thread.
/// Tasks run one after another, in the order in which they were posted, never inside `async`. Every operation
/// may be called on any thread.
class MainQueue {
 public:
  using Task = std::function<void()>;
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
  /// running tasks.
  /// @return the number of tasks run
  static std::size_t runPending();
};

}  // namespace lumo
