#include "examples/lumo-call/StatsTable.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace {

constexpr std::size_t kNameWidth = 26;

/// A cell of that many characters, empty for what is absent.
std::string cell(const std::optional<double>& value, int width, int decimals) {
  std::array<char, 32> text{};
  if (!value) return std::string(static_cast<std::size_t>(width), ' ');
  std::snprintf(text.data(), text.size(), "%*.*f", width, decimals, *value);
  return text.data();
}

std::string fitted(std::string text, std::size_t width) {
  text.resize(width, ' ');  // a longer line would break on a terminal, which then could not draw in place
  return text;
}

}  // namespace

std::string statsTable(const StatsReport& report) {
  std::array<char, 64> title{};
  std::snprintf(title.data(), title.size(), "Statistics at %.1f s", report.seconds);
  std::string text = fitted(title.data(), kNameWidth) + "  kbit/s   fps       size  loss %   rtt ms  level\n";
  for (const StreamFigures& stream : report.streams) {
    text += "  " + fitted(stream.name, kNameWidth - 2) + cell(stream.kilobits, 8, 0) +
            cell(stream.framesPerSecond, 6, 0) + "  " +
            std::string(stream.size.size() < 9 ? 9 - stream.size.size() : 0, ' ') + stream.size +
            cell(stream.lossPercent, 8, 0) + cell(stream.roundTripMs, 9, 0) + cell(stream.level, 7, 0) + "\n";
  }
  return text;
}
