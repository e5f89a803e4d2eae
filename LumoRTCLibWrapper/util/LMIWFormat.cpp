#include "LumoRTCLibWrapper/util/LMIWFormat.h"

#include <array>
#include <charconv>

namespace lumo {
namespace {

constexpr std::string_view kAbsentText = "(null)";
constexpr std::array<std::string_view, 4> kPlaceholders = {"%@", "%zd", "%ld", "%d"};

template <class Number>
void appendNumber(std::string& out, Number number) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(digits.data(), end);
}

void appendList(std::string& out, const std::vector<std::string>& list) {
  out += '(';
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i > 0) out += ", ";
    out += list[i];
  }
  out += ')';
}

/// The placeholder that `text` begins with, or empty.
std::string_view placeholderAt(std::string_view text) {
  for (const auto placeholder : kPlaceholders) {
    if (text.starts_with(placeholder)) return placeholder;
  }
  return {};
}

}  // namespace

void FormatValue::appendTo(std::string& out) const {
  switch (kind_) {
    case Kind::kAbsent:
      out += kAbsentText;
      break;
    case Kind::kSigned:
      appendNumber(out, integer_);
      break;
    case Kind::kUnsigned:
      appendNumber(out, static_cast<std::uint64_t>(integer_));
      break;
    case Kind::kDouble:
      appendNumber(out, double_);
      break;
    case Kind::kText:
      out += text_;
      break;
    case Kind::kList:
      appendList(out, *static_cast<const std::vector<std::string>*>(object_));
      break;
    case Kind::kObject:
      out += describe_(object_);
      break;
  }
}

std::string format(std::string_view format, FormatValues values) {
  std::string out;
  out.reserve(format.size() + 16 * values.size());
  appendFormat(out, format, values);
  return out;
}

void appendFormat(std::string& out, std::string_view format, FormatValues values) {
  auto next = values.begin();
  while (!format.empty()) {
    const auto percent = format.find('%');
    out += format.substr(0, percent);
    if (percent == std::string_view::npos) break;
    format.remove_prefix(percent);

    if (const auto placeholder = placeholderAt(format); !placeholder.empty()) {
      if (next == values.end()) {
        out += kAbsentText;
      } else {
        (next++)->appendTo(out);
      }
      format.remove_prefix(placeholder.size());
    } else {
      out += '%';
      format.remove_prefix(format.starts_with("%%") ? 2 : 1);
    }
  }
}

}  // namespace lumo
