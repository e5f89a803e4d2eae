#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

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

  /// Joins expected lines. "T publish type:2" is short for "log 4 IW/RTC-publish-T type:2", and so for E, R,
  /// L and S. "E: text" is the error line with that text of the method of the entry line before it, and
  /// "C text" the engine's console line.
  static std::string text(const std::vector<std::string>& lines) {
    std::stringstream all;
    for (const auto& line : lines) all << line << "\n";
    std::string text, method;
    for (std::string line; std::getline(all, line);) {
      const auto end = std::min(line.find(' ', 2), line.size());
      if (line.starts_with("T ")) method = line.substr(2, end - 2);
      if (line.starts_with("E: ")) {
        text += "log 2 IW/RTC-" + method + "-E msg:" + line.substr(3);
      } else if (line.starts_with("C ")) {
        text += "console LMRTCIWEngine" + line.substr(1);
      } else if (line.find(' ') == 1) {
        text += std::string("log ") + (line[0] == 'E' ? "2" : "4") + " IW/RTC-" + line.substr(2, end - 2) +
                "-" + line[0] + line.substr(end);
      } else {
        text += line;
      }
      text += "\n";
    }
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
