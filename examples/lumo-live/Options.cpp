#include "examples/lumo-live/Options.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "LumoRTCLocal/media/StreamWriter.h"
#include "examples/support/CommandLine.h"
#include "examples/support/Names.h"

namespace {

constexpr double kMostSeconds = 60 * 60;

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
      ->check(CLI::Range(std::size_t{1}, kNames.size()));
  app.add_option("--seconds", options.seconds, "How long each step lasts (default: 1)")
      ->type_name("N")
      ->check(secondsUpTo(kMostSeconds, "an hour"));
  app.add_option(
         "--push", options.addresses,
         "Push the mix there: rtmp://host/app/stream, udp://host:port or file:///path; may be repeated")
      ->type_name("ADDRESS")
      ->allow_extra_args(false)
      ->check(checkAddress);
  app.add_option("--pictures", options.pictures, "Write a picture of the mix per step (PNG) into this folder")
      ->type_name("DIR")
      ->check(checkFolder);
  app.add_option("--room", options.roomId, "Room to join (default: live)")
      ->type_name("ID")
      ->check(checkRoomId);
  app.add_option("--link-room", options.linkedRoomId,
                 "Link the room with this one, so that the host there appears in the mix")
      ->type_name("ID")
      ->check(checkRoomId);
  app.add_flag("--log", options.log, "Write the structured log to standard error");
  if (const auto exit = readOptions(app, argc, argv)) return *exit;
  if (options.linkedRoomId == options.roomId)
    return refuse(app, "--link-room: a room cannot be linked with itself");
  return options;
}
