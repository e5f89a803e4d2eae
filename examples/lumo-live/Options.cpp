#include "examples/lumo-live/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "LumoRTCLocal/media/StreamWriter.h"

namespace {

constexpr ExitCode kWrongOptions{2};
constexpr std::size_t kMostBroadcasters = 16;
constexpr double kMostSeconds = 60 * 60;

std::string checkSeconds(const std::string& text) {
  double seconds = 0;
  const bool isInRange = CLI::detail::lexical_cast(text, seconds) && seconds > 0 && seconds <= kMostSeconds;
  return isInRange ? "" : text + " is not a number of seconds above 0, up to an hour";
}

std::string checkAddress(const std::string& text) {
  switch (lumo::StreamWriter::check(text)) {
    case lumo::StreamAddress::usable:
      return "";
    case lumo::StreamAddress::malformed:
      return text + " is not an address";
    case lumo::StreamAddress::unknownProtocol:
      return text + " has none of the protocols rtmp, udp and file";
    case lumo::StreamAddress::unknownContainer:
      break;
  }
  return text + " is none of .flv, .ts, .mp4 and .mkv";
}

std::string checkFolder(const std::string& text) {
  std::error_code ignored;
  return std::filesystem::is_directory(text, ignored) ? "" : text + " is not a folder";
}

}  // namespace

std::variant<LiveOptions, ExitCode> parseOptions(int argc, const char* const* argv) {
  LiveOptions options;
  CLI::App app("Runs a live broadcast in this process and steps through what its mix can do.", "lumo-live");
  app.add_option("--broadcasters", options.broadcasters,
                 "How many scripted broadcasters there are (default: 3)")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, kMostBroadcasters));
  app.add_option("--seconds", options.seconds, "How long each step lasts (default: 1)")
      ->type_name("N")
      ->check(checkSeconds);
  app.add_option(
         "--push", options.addresses,
         "Push the mix there: rtmp://host/app/stream, udp://host:port or file:///path; may be repeated")
      ->type_name("ADDRESS")
      ->allow_extra_args(false)
      ->check(checkAddress);
  app.add_option("--pictures", options.pictures, "Write a picture of the mix per step (PNG) into this folder")
      ->type_name("DIR")
      ->check(checkFolder);
  app.add_option("--room", options.roomId, "Room to join (default: live)")->type_name("ID");
  app.add_option("--link-room", options.linkedRoomId,
                 "Link the room with this one, so that the host there appears in the mix")
      ->type_name("ID");
  app.add_flag("--log", options.log, "Write the structured log to standard error");
  try {
    app.parse(std::max(argc, 1), argv);  // a process may be started without even its name
    if (options.linkedRoomId == options.roomId)
      throw CLI::ValidationError("--link-room", "a room cannot be linked with itself");
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return ExitCode{0};
  } catch (const CLI::ParseError& error) {
    std::cerr << "lumo-live: " << error.what() << "\n\n" << app.help();
    return kWrongOptions;
  }
  return options;
}
