#include "examples/support/Screen.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

Screen& Screen::shared() {
  static Screen screen;
  return screen;
}

Screen::Screen() : isTerminal_(isatty(STDOUT_FILENO) == 1) {}

void Screen::line(std::string_view text) {
  const std::lock_guard lock(mutex_);
  erase();
  std::printf("%.*s\n%s", static_cast<int>(text.size()), text.data(), block_.c_str());
  std::fflush(stdout);
}

void Screen::block(std::string text) {
  const std::lock_guard lock(mutex_);
  erase();
  std::printf("%s", text.c_str());
  std::fflush(stdout);
  if (isTerminal_) block_ = std::move(text);
}

/// Goes back to the block's first line and clears the screen from there.
void Screen::erase() const {
  const auto lines = std::ranges::count(block_, '\n');
  if (lines > 0) std::printf("\x1b[%dA\x1b[J", static_cast<int>(lines));
}
