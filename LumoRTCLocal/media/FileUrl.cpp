#include "LumoRTCLocal/media/FileUrl.h"

#include <charconv>
#include <cstddef>
#include <string_view>

namespace lumo {
namespace {

constexpr std::size_t kEscapeLength = 3;  // %20

/// The byte that an escape at the start of `text` stands for; -1 when there is none.
int unescaped(std::string_view text) {
  if (text.size() < kEscapeLength || text.front() != '%') return -1;
  unsigned value = 0;  // unsigned, as a sign is no digit
  const auto [end, error] = std::from_chars(text.data() + 1, text.data() + kEscapeLength, value, 16);
  return error == std::errc() && end == text.data() + kEscapeLength ? static_cast<int>(value) : -1;
}

}  // namespace

std::string pathOfUrl(const std::string& urlOrPath) {
  std::string_view rest = urlOrPath;
  if (!rest.starts_with("file://")) return urlOrPath;
  rest.remove_prefix(std::string_view("file://").size());
  if (rest.starts_with("localhost/")) rest.remove_prefix(std::string_view("localhost").size());
  if (!rest.starts_with('/')) return urlOrPath;
  std::string path;
  while (!rest.empty()) {
    const int byte = unescaped(rest);
    path += byte < 0 ? rest.front() : static_cast<char>(byte);
    rest.remove_prefix(byte < 0 ? 1 : kEscapeLength);
  }
  return path;
}

}  // namespace lumo
