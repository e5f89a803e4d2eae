#include <locale>

#include "LumoRTCLibWrapper/util/LMIWJson.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using lumo::fuzz::check;

bool isUtf8(const std::string& text) {
  for (std::size_t i = 1; i < text.size(); ++i) {  // the library takes surrogates
    if (text[i - 1] == '\xED' && static_cast<unsigned char>(text[i]) >= 0xA0) return false;
  }
  using Utf8 = std::codecvt<char32_t, char8_t, std::mbstate_t>;
  const std::u8string bytes(text.begin(), text.end());
  std::mbstate_t state{};
  const int length = std::use_facet<Utf8>(std::locale::classic())
                         .length(state, bytes.data(), bytes.data() + bytes.size(), bytes.size());
  return static_cast<std::size_t>(length) == bytes.size();
}

/// Takes `token` from the front of `rest`, and the white space before it.
void take(std::string_view& rest, std::string_view token) {
  rest.remove_prefix(std::min(rest.find_first_not_of(" \n"), rest.size()));
  check(rest.starts_with(token), "every token is in its place");
  rest.remove_prefix(token.size());
}

/// Takes a string literal, and nothing that RFC 8259 forbids.
std::string takeString(std::string_view& rest) {
  constexpr std::string_view kNames = "\"\\/bfnrtu", kMeanings = "\"\\/\b\f\n\r\t";
  std::string value;
  take(rest, "\"");
  while (!rest.starts_with('"')) {
    const bool isEscape = rest.starts_with('\\');
    const std::size_t place = isEscape && rest.size() > 1 ? kNames.find(rest[1]) : 0;
    check(place != kNames.npos && !rest.empty() && (rest[0] & 0xE0) != 0, "a string has no raw controls");
    const bool isCode = place == kMeanings.size();
    const auto code = isCode ? std::stoi(std::string(rest.substr(2, 4)), nullptr, 16) : 0;
    value += isCode ? static_cast<char>(code) : isEscape ? kMeanings[place] : rest[0];
    rest.remove_prefix(isCode ? 6 : isEscape ? 2 : 1);
  }
  rest.remove_prefix(1);
  return value;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  lumo::fuzz::Input input(data, size);
  const auto number = input.take<std::int64_t>();
  lumo::JsonObject object;
  object.add("number", number);
  std::vector<std::string> texts;  // a key, its value, the next key
  while (!input.isEmpty()) {
    texts.push_back(input.text());
    texts.push_back(input.text());
    object.add(texts.end()[-2], texts.back());
  }

  const std::string whole = object.text();
  check(isUtf8(whole), "the text is UTF-8");
  std::string_view rest = whole;
  take(rest, "{");
  check(takeString(rest) == "number", "the number's key");
  take(rest, ":");
  take(rest, std::to_string(number));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    take(rest, i % 2 == 0 ? "," : ":");
    const std::string read = takeString(rest);
    check(isUtf8(texts[i]) ? read == texts[i] : read.find("\xEF\xBF\xBD") != read.npos, "texts read back");
  }
  take(rest, "}");
  check(rest.empty(), "the object ends");
  return 0;
}
