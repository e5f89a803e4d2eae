#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <mutex>
#include <string>
#include <utility>

namespace lumo {

/// Everything that was seen, in one order: SDK calls, log lines, console lines, host calls. Any thread may
/// add to it.
class Trace {
 public:
  void add(const std::string& line) {
    const std::lock_guard lock(mutex_);
    lines_ += line + "\n";
  }

  /// The lines since the last call.
  std::string take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

  static std::string text(std::initializer_list<std::string> lines) {
    std::string text;
    for (const auto& line : lines) text += line + "\n";
    return text;
  }

 private:
  std::mutex mutex_;  ///< guards the lines
  std::string lines_;
};

}  // namespace lumo

/// Compares all lines since the last check; needs `trace`, a pointer to a Trace, in scope. A difference
/// prints as one.
#define EXPECT_TRACE(...) EXPECT_EQ(::lumo::Trace::text({__VA_ARGS__}), trace->take())
