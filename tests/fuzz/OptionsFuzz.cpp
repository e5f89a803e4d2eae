#include <filesystem>
#include <set>
#include <sstream>

#include "LumoRTCLocal/media/StreamWriter.h"
#include LUMO_OPTIONS_HEADER
#include "tests/fuzz/Fuzz.h"

namespace {

using lumo::fuzz::check;

template <class Options>
void checkRanges(const Options& options) {
  check(options.seconds > 0 && options.seconds <= 24 * 60 * 60, "the seconds are in range");
  if constexpr (requires { options.names; }) {
    const std::set<std::string> names(options.names.begin(), options.names.end());
    check(names.size() == options.names.size() && names.size() <= 16, "there are up to 16 different names");
    check(!names.contains("") && !names.contains("you"), "names are of others");
    check(options.echo >= 0 && options.echo <= 60, "the echo test is in range");
    const auto& [delay, jitter, loss, bandwidth] = options.network;
    for (const auto time : {delay, jitter})
      check(time.count() >= 0 && time.count() <= 60'000'000, "times are in range");
    check(loss >= 0 && loss <= 1 && bandwidth >= 0 && bandwidth <= 10'000'000'000, "the network is in range");
  } else {
    check(options.broadcasters >= 1 && options.broadcasters <= 16, "the broadcasters are in range");
    check(options.roomId != options.linkedRoomId, "the linked room is another one");
    check(options.pictures.empty() || std::filesystem::is_directory(options.pictures), "the folder is there");
    for (const std::string& address : options.addresses)
      check(lumo::StreamWriter::check(address) == lumo::StreamAddress::usable, "the addresses are usable");
  }
}

}  // namespace

/// Hands a demo's parser the lines of the input, the program's name in front.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream text(std::string(data, data + size));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  std::vector<const char*> arguments;
  for (const std::string& line : lines) arguments.push_back(line.c_str());
  arguments.push_back(nullptr);

  std::ostringstream message;
  auto* const outBefore = std::cout.rdbuf(message.rdbuf());
  auto* const errorBefore = std::cerr.rdbuf(message.rdbuf());
  const auto parsed = parseOptions(static_cast<int>(lines.size()), arguments.data());
  std::cout.rdbuf(outBefore);
  std::cerr.rdbuf(errorBefore);
  check(message.view().empty() == (parsed.index() == 0), "there are either options or a message");
  if (parsed.index() == 0) checkRanges(std::get<0>(parsed));
  const auto* const exit = std::get_if<ExitCode>(&parsed);
  check(!exit || exit->value == 0 || exit->value == 2, "code 0 is for the help, 2 for what is wrong");
  return 0;
}
