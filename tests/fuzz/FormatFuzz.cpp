#include <cmath>
#include <optional>

#include "LumoRTCLibWrapper/util/LMIWFormat.h"
#include "tests/fuzz/Fuzz.h"

/// Builds a format piece by piece, and beside it the line that has to come out.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  lumo::fuzz::Input input(data, size);
  const auto number = input.take<std::int64_t>();
  const auto count = input.take<std::uint32_t>();
  const auto fraction = input.take<double>();
  const std::vector<std::string> list = {input.text(), input.text()};
  const auto maybe = count % 2 == 0 ? std::optional(input.text()) : std::nullopt;

  const std::string digits = lumo::format("%d", {fraction});
  const double back = std::strtod(digits.c_str(), nullptr);
  lumo::fuzz::check(back == fraction || (std::isnan(back) && std::isnan(fraction)), "numbers read back");

  const std::string values[] = {
      std::to_string(number),  std::to_string(count), digits, list[0], "(" + list[0] + ", " + list[1] + ")",
      maybe.value_or("(null)")};
  const std::string placeholders[] = {"%@", "%zd", "%ld", "%d"};
  const std::string copied[] = {"%x", "%z ", "%l ", "%-", "d@", ":"};
  std::string format, expected = "before ", line = expected;
  for (std::size_t used = 0; !input.isEmpty();) {
    const auto piece = input.take<std::uint8_t>();
    const bool isValue = piece < 128, isSign = !isValue && piece < 160;
    format += isValue ? placeholders[piece % 4U] : isSign ? "%%" : copied[piece % 6U];
    expected += !isValue ? isSign ? "%" : copied[piece % 6U] : used < 6 ? values[used++] : "(null)";
  }
  lumo::appendFormat(line, format, {number, count, fraction, list[0], list, maybe});
  lumo::fuzz::check(line == expected, "the line has every value in its place");
  return 0;
}
