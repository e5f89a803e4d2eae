#include "LumoRTCLibWrapper/util/LMIWJson.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace lumo {
namespace {

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Length in bytes of the UTF-8 sequence at the start of `text` (RFC 3629: no overlong forms, no surrogates,
/// nothing above U+10FFFF); 0 if it is malformed.
std::size_t sequenceLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[i])) return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool tooLarge = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || tooLarge ? 0 : length;
}

void appendEscaped(std::string& out, char character) {
  switch (character) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    case '\b':
      out += "\\b";
      return;
    case '\f':
      out += "\\f";
      return;
    default:
      break;
  }
  if (static_cast<unsigned char>(character) >= 0x20) {
    out += character;
    return;
  }
  std::array<char, 8> escape{};
  std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(character));
  out += escape.data();
}

std::string quoted(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const auto length = sequenceLength(text);
    if (length == 0) {
      out += kReplacementCharacter;
    } else if (length == 1) {
      appendEscaped(out, text[0]);
    } else {
      out += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out += '"';
}

}  // namespace

JsonObject& JsonObject::add(std::string_view key, std::string_view text) { return addRaw(key, quoted(text)); }

JsonObject& JsonObject::addRaw(std::string_view key, std::string_view value) {
  members_ += members_.empty() ? "\n  " : ",\n  ";
  members_ += quoted(key);
  members_ += " : ";
  members_ += value;
  return *this;
}

}  // namespace lumo
