#pragma once

#include <mutex>
#include <utility>

namespace lumo {

/// Does something under a lock at the end of its scope, where the lock may be open because code that ran
/// without it has thrown.
template <class Function>
class FinallyLocked {
 public:
  FinallyLocked(std::unique_lock<std::mutex>& lock, Function function)
      : lock_(lock), function_(std::move(function)) {}
  FinallyLocked(const FinallyLocked&) = delete;
  FinallyLocked& operator=(const FinallyLocked&) = delete;
  ~FinallyLocked() {
    if (!lock_.owns_lock()) lock_.lock();
    function_();
  }

 private:
  std::unique_lock<std::mutex>& lock_;
  const Function function_;
};

}  // namespace lumo
