#pragma once

#include <cstdint>
#include <string_view>

#include "LumoRTCLibWrapper/util/LMIWFormat.h"
#include "LumoRTCLibWrapper/util/LMIWLog.h"

/// The frame of one host operation: writes the entry line when it is made, the error line of a failed
/// precondition and the result line of the asynchronous outcome. As small as a pointer; completions keep a
/// copy.
class CallFrame {
 public:
  /// Writes the entry line.
  /// @param method  the operation's name: `__func__`, or another literal where the log has to carry one
  /// @param keys    comma-separated name:%@ pairs, one per value
  explicit CallFrame(const char* method, std::string_view keys = {}, lumo::FormatValues values = {})
      : method_(method) {
    LMIMIWLog::entry(method_, keys, values);
  }

  /// Writes the error line and returns `code`, for the operation to return.
  std::int64_t fail(std::int64_t code, std::string_view message) const {
    return failAs(method_, code, message);
  }

  /// The same under another method's name, where hosts rely on it.
  static std::int64_t failAs(const char* method, std::int64_t code, std::string_view message) {
    LMIMIWLog::error(method, message);
    return code;
  }

  /// Writes the result line; an error line when `code` is not 0.
  void result(std::int64_t code, std::string_view keys, lumo::FormatValues values) const {
    LMIMIWLog::result(code, method_, keys, values);
  }

 private:
  const char* method_;
};
