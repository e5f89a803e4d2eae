#include "examples/lumo-call/Options.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <set>

#include "examples/lumo-call/StatsPlot.h"
#include "examples/support/CommandLine.h"
#include "examples/support/Names.h"

namespace {

constexpr double kMostSeconds = 24 * 60 * 60;
constexpr std::int64_t kLongestEcho = 60;
constexpr double kPercent = 100;
constexpr std::int64_t kLongestDelayMs = 60'000;
constexpr std::int64_t kMostKilobits = 10'000'000;

const std::map<std::string, SurfaceKind> kSurfaces = {
    {"native", SurfaceKind::native}, {"flutter", SurfaceKind::flutter}, {"unity", SurfaceKind::unity}};

std::string checkPlot(const std::string& path) {
  return isPlotPath(path) ? "" : path + " ends neither in .png nor in .svg";
}

std::string checkPercent(const std::string& text) {
  double percent = 0;
  const bool isInRange = CLI::detail::lexical_cast(text, percent) && percent >= 0 && percent <= kPercent;
  return isInRange ? "" : text + " is not a number from 0 to 100";
}

/// The network in the units of the command line.
struct NetworkOptions {
  double lossPercent = 0;
  std::int64_t delayMs = 0;
  std::int64_t jitterMs = 0;
  std::int64_t kilobits = 0;

  lumo::NetworkModel model() const {
    return {std::chrono::milliseconds(delayMs), std::chrono::milliseconds(jitterMs), lossPercent / kPercent,
            kilobits * 1000};
  }
};

/// @return what is wrong with the names; empty when all is well
std::string checkNames(const std::vector<std::string>& names) {
  std::set<std::string> taken{kLocalUserId};
  for (const std::string& name : names) {
    if (name.empty()) return "--names: a name is empty";
    if (!taken.insert(name).second) return "--names: " + name + " is there twice or is the local user";
  }
  return {};
}

/// Adds names until there are enough.
void completeNames(std::vector<std::string>& names, std::size_t count) {
  for (const char* const name : kNames) {
    if (names.size() >= count) return;
    if (std::ranges::find(names, name) == names.end()) names.emplace_back(name);
  }
}

}  // namespace

std::variant<CallOptions, ExitCode> parseOptions(int argc, const char* const* argv) {
  CallOptions options;
  NetworkOptions network;
  std::optional<std::size_t> participants;
  CLI::App app(
      "Calls a few scripted participants, in this process, and shows "
      "what happens.",
      "lumo-call");
  app.add_option("--participants", participants,
                 "How many others take part (default: 2, or one for each name)")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{0}, kNames.size()));
  app.add_option("--names", options.names, "Their names")
      ->type_name("A,B,...")
      ->delimiter(',')
      ->allow_extra_args(false);
  app.add_option("--camera", options.camera, "Video file or capture device that serves as the camera")
      ->type_name("FILE");
  app.add_option("--music", options.music, "Sound file that is mixed into the call")->type_name("FILE");
  app.add_option("--effect", options.effect, "Sound file that is played twice on top")->type_name("FILE");
  app.add_option("--record", options.record,
                 "Write what the speaker plays (speaker.wav) and what the "
                 "others hear (microphone.wav)")
      ->type_name("DIR");
  app.add_flag("--play", options.play, "Play the call on the sound output of this machine");
  app.add_option("--file", options.file, "Media file to publish beside the camera")->type_name("FILE");
  app.add_option("--tag", options.tag, "What the file's stream is called (default: file)")->type_name("NAME");
  app.add_option("--seconds", options.seconds, "How long the call lasts (default: 5)")
      ->type_name("N")
      ->check(secondsUpTo(kMostSeconds, "a day"));
  app.add_option("--sheet", options.sheet, "Write a contact sheet of all views (PNG)")->type_name("FILE");
  app.add_option("--surface", options.surface, "What shows the video (default: native)")
      ->transform(CLI::CheckedTransformer(kSurfaces).description(""))
      ->type_name("native|flutter|unity");
  app.add_option("--room", options.roomId, "Room to join (default: demo)")
      ->type_name("ID")
      ->check(checkRoomId);
  app.add_flag("--stats", options.stats, "Show the statistics of all streams while the call lasts");
  app.add_option("--plot", options.plot, "Draw the statistics over time (PNG or SVG)")
      ->type_name("FILE")
      ->check(checkPlot);
  app.add_option("--loss", network.lossPercent, "Packets that the own connection loses, up and down")
      ->type_name("PERCENT")
      ->check(checkPercent);
  app.add_option("--delay", network.delayMs, "How long packets take on it, each way")
      ->type_name("MS")
      ->check(CLI::Range(std::int64_t{0}, kLongestDelayMs));
  app.add_option("--jitter", network.jitterMs, "How much longer some of them take")
      ->type_name("MS")
      ->check(CLI::Range(std::int64_t{0}, kLongestDelayMs));
  app.add_option("--bandwidth", network.kilobits,
                 "What it carries each way; an uncompressed camera takes 55296 "
                 "(default: 0, no limit)")
      ->type_name("KBIT/S")
      ->check(CLI::Range(std::int64_t{0}, kMostKilobits));
  app.add_option("--watermark", options.watermark, "Picture to draw into that of the camera (PNG)")
      ->type_name("FILE");
  app.add_option("--sei", options.sei, "Send this text with the pictures of the camera")->type_name("TEXT");
  app.add_flag("--probe", options.probe, "Before the call, probe the network for five seconds");
  app.add_option("--echo", options.echo, "Before the call, record the microphone that long and play it back")
      ->type_name("SECONDS")
      ->check(CLI::Range(std::int64_t{1}, kLongestEcho));
  app.add_flag("--log", options.log, "Write the structured log to standard error");
  if (const auto exit = readOptions(app, argc, argv)) return *exit;
  if (const std::string problem = checkNames(options.names); !problem.empty()) return refuse(app, problem);
  const std::size_t count = participants.value_or(options.names.empty() ? 2 : options.names.size());
  if (options.names.size() > count) return refuse(app, "--names: there are more names than participants");
  completeNames(options.names, count);
  options.network = network.model();
  return options;
}
