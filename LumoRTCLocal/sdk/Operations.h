#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// Runs the SDK's operations on the SDK's runner, and makes them fail or wait where that was asked for. Those
/// of one initialisation run in the order in which they were called: one that takes its time, such as a join
/// that is under way, holds up those behind it, so that leaving ends a room that has been joined. Any thread.
class Operations : public std::enable_shared_from_this<Operations> {
 public:
  /// Does the operation and completes it.
  /// @param refusal  0, or the code with which to complete it at once, without doing anything
  using Work = std::function<void(std::int64_t refusal)>;

  Operations(std::shared_ptr<Timeline> timeline, std::shared_ptr<Runner> sdk);

  /// Between `begin` and `end` the engine is initialised. What was called earlier, and has not run at the
  /// end, is refused.
  void begin();
  /// @return whether the engine was initialised
  bool end();
  /// Drops, unanswered, what has not run and whatever is called later: for a timeline that stands still for
  /// good, with which it would wait for ever and keep what it holds.
  void abandon();
  /// The initialisation that is in force; 0 for none.
  std::uint64_t session() const;

  /// Runs `work` once, later.
  /// @param name    of the operation, for the injected failures
  /// @param travel  how long it takes to where it is done
  void run(std::string_view name, Work work, Microseconds travel = Microseconds(0));

  /// As LumoRTCLocal::failNext and LumoRTCLocal::delayNext.
  std::int64_t failNext(const std::string& name, std::int64_t code, std::int32_t times);
  std::int64_t delayNext(const std::string& name, Microseconds duration);

 private:
  struct Fault {
    std::int64_t code = 0;
    std::int32_t times = 0;
    Microseconds delay{0};
  };

  struct Call {
    std::uint64_t session = 0;  ///< in which it was called; 0: in none
    std::int64_t code = 0;
    Work work;
  };

  Fault takeLocked(std::string_view name);
  void perform(std::uint64_t number);

  const std::shared_ptr<Timeline> timeline_;
  const std::shared_ptr<Runner> sdk_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::map<std::string, Fault, std::less<>> faults_;
  std::map<std::uint64_t, Call> waiting_;  ///< by number; here, as the runner must not own what holds it
  std::uint64_t calls_ = 0;
  Microseconds lastDue_{0};  ///< of what this initialisation has called
  std::uint64_t sessions_ = 0;
  bool initialised_ = false;
  bool abandoned_ = false;
};

}  // namespace lumo
