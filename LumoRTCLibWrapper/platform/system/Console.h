#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "LumoRTCLibWrapper/util/LMIWFormat.h"

namespace lumo {

/// The system console: plain diagnostic lines, beside the structured log. Every operation may be called on
/// any thread.
class Console {
 public:
  /// Takes each line, without its line end, on the thread that wrote it; called from several threads at once.
  using Sink = std::function<void(const std::string& line)>;

  /// Writes one line; `format` and `values` as in lumo::format.
  static void write(std::string_view format, FormatValues values = {});

  /// Replaces the sink. An empty one silences the console; lines are then not even formatted.
  static void setSink(Sink sink);

  /// Brings back the default sink, which writes to standard error.
  static void resetSink();
};

}  // namespace lumo
