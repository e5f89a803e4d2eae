#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

/// Standard output as lines with a block of text that stays below them on a terminal. Any thread.
class Screen {
 public:
  /// The screen of the process.
  static Screen& shared();

  void line(std::string_view text);
  /// Shows `text`, whole lines, in the place of the one before; where the output is no terminal, below it. On
  /// a terminal with fewer rows only the first lines are shown.
  void block(std::string text);

 private:
  Screen();
  void erase() const;

  const bool isTerminal_;
  std::mutex mutex_;   // guards the block, and that lines stay whole
  std::string block_;  // what stands below the lines
};
