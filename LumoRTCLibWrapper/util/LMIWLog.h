#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "LumoRTCLibWrapper/util/LMIWFormat.h"

/// Builds the tags of the wrapper's log lines and writes the lines. Nothing is formatted or allocated for a
/// line that the log's threshold suppresses.
class LMIMIWLog {
 public:
  /// The tag of a line, such as "IW/RTC-leaveRoom-T".
  /// @param status  "T" entry of an operation, "E" error, "R" result, "L" event for the listener, "S" step
  /// @param method  the operation's name
  static std::string getTagWithStatus(std::string_view status, std::string_view method);

  /// Entry of a host operation.
  static void entry(std::string_view method, std::string_view keys = {}, lumo::FormatValues values = {});
  /// A failed precondition or an error that the engine found.
  static void error(std::string_view method, std::string_view message);
  /// Result of an asynchronous operation: an error line when `code` is not 0.
  static void result(std::int64_t code, std::string_view method, std::string_view keys,
                     lumo::FormatValues values);
  /// An SDK event on its way to the host; `method` is the host callback.
  static void listener(std::string_view method, std::string_view keys = {}, lumo::FormatValues values = {});
  /// A step inside an operation that has several.
  static void step(std::string_view method, std::string_view keys = {}, lumo::FormatValues values = {});
};
