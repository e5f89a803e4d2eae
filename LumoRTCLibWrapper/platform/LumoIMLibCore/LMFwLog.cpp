#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace {

void writeToStandardError(const LMFwLogEntry& entry) {
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(entry.time.time_since_epoch()).count();
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm calendar{};
  gmtime_r(&seconds, &calendar);
  std::array<char, 32> clock{};
  std::strftime(clock.data(), clock.size(), "%Y-%m-%dT%H:%M:%S", &calendar);
  // One call per line, so that lines of different threads do not mix.
  std::fprintf(stderr, "%s.%03dZ %d %s %s\n", clock.data(), static_cast<int>(milliseconds % 1000),
               static_cast<int>(entry.level), entry.tag.c_str(), entry.keys.c_str());
}

}  // namespace

LMFwLog& LMFwLog::getInstance() {
  static LMFwLog instance;
  return instance;
}

void LMFwLog::write(std::int64_t level, std::int64_t type, std::string_view tag, std::string_view keys,
                    lumo::FormatValues values) {
  if (!isEnabled(level)) return;
  const LMFwLogEntry entry{std::chrono::system_clock::now(), level, type, std::string(tag),
                           lumo::format(keys, values)};
  if (const auto sink = sink_.get()) {
    (*sink)(entry);
  } else {
    writeToStandardError(entry);
  }
}

void LMFwLog::setSink(Sink sink) {
  sink_.set(sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr);
}
