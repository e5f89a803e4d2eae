#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/media/FileUrl.h"
#include "LumoRTCLocal/media/MediaFileReader.h"
#include "examples/lumo-call/Call.h"
#include "examples/lumo-call/Options.h"
#include "examples/lumo-call/StatsPlot.h"
#include "examples/support/ContactSheet.h"
#include "examples/support/PngImage.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongOptions = 2;

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text.empty() ? "none" : text;
}

void printSummary(const Call& call) {
  std::vector<std::string> frames;
  for (const auto& shown : call.shown())
    frames.push_back(shown.picture.label + " " + std::to_string(shown.frames));
  std::vector<std::string> tones;
  for (const auto& [name, level] : call.heard()) {
    char text[64];
    std::snprintf(text, sizeof(text), " %.0f Hz at %.2f", level.frequencyHz, level.highest);
    tones.push_back(name + text);
  }
  std::printf("Frames shown: %s. Loudest sound received: %s.\n", joined(frames).c_str(),
              joined(tones).c_str());
}

/// @return what is wrong; empty when all is well
std::string writeSheet(const CallOptions& options, const Call& call) {
  if (options.sheet.empty() || call.shown().empty()) return {};
  std::vector<SheetPicture> pictures;
  for (const auto& shown : call.shown()) pictures.push_back(shown.picture);
  return writeContactSheet(options.sheet, pictures);
}

/// @return what is wrong; empty when all is well
std::string writePlot(const CallOptions& options, const Call& call) {
  if (options.plot.empty()) return {};
  const auto reports = call.statsReports();
  if (reports.empty()) return options.plot + " is not written: the call was too short for statistics";
  return writeStatsPlot(options.plot, reports);
}

/// @return what is wrong with the files that the options name; empty when all is well
std::string openFiles(const CallOptions& options, LumoRTCLocal& local) {
  if (!options.camera.empty()) {
    if (auto error = local.setCamera(options.camera)) return std::move(*error);
  }
  for (const std::string& sound : {options.music, options.effect}) {
    if (sound.empty()) continue;
    auto opened = lumo::MediaFileReader::open(lumo::pathOfUrl(sound), lumo::MediaKind::sound);
    if (!opened.reader) return std::move(opened.error);
  }
  if (!options.watermark.empty() && !readPng(options.watermark))
    return options.watermark + " is no PNG file that can be read";
  if (options.record.empty()) return {};
  std::error_code ignored;  // what matters is whether the files can be written
  const std::filesystem::path folder(options.record);
  std::filesystem::create_directories(folder, ignored);
  if (auto error = local.recordSpeaker(folder / "speaker.wav")) return std::move(*error);
  return local.recordMicrophone(folder / "microphone.wav").value_or(std::string());
}

int runCall(const CallOptions& options) {
  const auto local = LumoRTCLocal::install({.userId = kLocalUserId, .soundOutput = options.play});
  if (const std::string error = openFiles(options, *local); !error.empty()) {
    std::cerr << "lumo-call: " << error << '\n';
    return kWrongOptions;
  }
  local->setNetwork(options.network, options.network);
  Call call(options, local);
  const bool isAsPlanned = call.run();
  printSummary(call);
  bool isWell = isAsPlanned;
  for (const std::string& problem :
       {call.recordingProblem(), writeSheet(options, call), writePlot(options, call)}) {
    if (problem.empty()) continue;
    std::cerr << "lumo-call: " << problem << '\n';
    isWell = false;
  }
  return isWell ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  const auto parsed = parseOptions(argc, argv);
  if (const auto* const exitCode = std::get_if<ExitCode>(&parsed)) return exitCode->value;
  const auto& options = std::get<CallOptions>(parsed);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a timeline is read while it grows
  if (!options.log) {
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    lumo::Console::setSink({});
  }
  return runCall(options);
}
