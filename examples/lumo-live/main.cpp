#include <cstdio>
#include <variant>

#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "examples/lumo-live/Broadcast.h"
#include "examples/lumo-live/Options.h"

int main(int argc, char** argv) {
  const auto parsed = parseOptions(argc, argv);
  if (const auto* const exitCode = std::get_if<ExitCode>(&parsed)) return exitCode->value;
  const auto& options = std::get<LiveOptions>(parsed);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a timeline is read while it grows
  if (!options.log) {
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    lumo::Console::setSink({});
  }
  Broadcast broadcast(options, LumoRTCLocal::install({.userId = "you"}));
  return broadcast.run() ? 0 : 1;
}
