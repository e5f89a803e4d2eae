#include "LumoRTCLibWrapper/util/LMIWLog.h"

#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"

namespace {

constexpr std::int64_t kLogType = 1;

void write(std::int64_t level, std::string_view status, std::string_view method, std::string_view keys,
           lumo::FormatValues values) {
  auto& log = LMFwLog::getInstance();
  if (!log.isEnabled(level)) return;
  log.write(level, kLogType, LMIMIWLog::getTagWithStatus(status, method), keys, values);
}

}  // namespace

std::string LMIMIWLog::getTagWithStatus(std::string_view status, std::string_view method) {
  return lumo::format("%@-%@-%@", {"IW/RTC", method, status});
}

void LMIMIWLog::entry(std::string_view method, std::string_view keys, lumo::FormatValues values) {
  write(LMFwLogLevelInfo, "T", method, keys, values);
}

void LMIMIWLog::error(std::string_view method, std::string_view message) {
  write(LMFwLogLevelError, "E", method, "msg:%@", {message});
}

void LMIMIWLog::result(std::int64_t code, std::string_view method, std::string_view keys,
                       lumo::FormatValues values) {
  if (code == 0) {
    write(LMFwLogLevelInfo, "R", method, keys, values);
  } else {
    write(LMFwLogLevelError, "E", method, keys, values);
  }
}

void LMIMIWLog::listener(std::string_view method, std::string_view keys, lumo::FormatValues values) {
  write(LMFwLogLevelInfo, "L", method, keys, values);
}

void LMIMIWLog::step(std::string_view method, std::string_view keys, lumo::FormatValues values) {
  write(LMFwLogLevelInfo, "S", method, keys, values);
}
