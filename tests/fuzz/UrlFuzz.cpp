#include <cctype>

#include "LumoRTCLocal/media/FileUrl.h"
#include "LumoRTCLocal/media/StreamWriter.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using lumo::fuzz::check;
  const std::string text(data, data + size);
  std::string meaning = "/";
  for (std::size_t i = 0; i < size; ++i) {
    const bool isEscape =
        text[i] == '%' && i + 2 < size && std::isxdigit(data[i + 1]) && std::isxdigit(data[i + 2]);
    meaning += isEscape ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
    if (isEscape) i += 2;
  }
  for (const std::string host : {"file:///", "file://localhost/"})
    check(lumo::pathOfUrl(host + text) == meaning, "escapes are replaced, and nothing else");
  const bool isAddress = lumo::StreamWriter::check(text) == lumo::StreamAddress::usable;
  check(!isAddress || (text.find("://") > 2 && text.find("://") + 4 < size), "an address names a host");
  return 0;
}
