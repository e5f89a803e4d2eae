#include "examples/support/Screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

/// The first lines of `block`, as many as the terminal can show below another one.
std::string fitted(std::string block) {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return block;
  std::size_t end = 0;
  for (int rows = size.ws_row - 2; rows > 0 && end < block.size(); --rows) end = block.find('\n', end) + 1;
  block.resize(end);
  return block;
}

}  // namespace

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
  if (isTerminal_) block_ = text = fitted(std::move(text));
  std::printf("%s", text.c_str());
  std::fflush(stdout);
}

/// Goes back to the block's first line and clears the screen from there.
void Screen::erase() const {
  const auto lines = std::ranges::count(block_, '\n');
  if (lines > 0) std::printf("\x1b[%dA\x1b[J", static_cast<int>(lines));
}
