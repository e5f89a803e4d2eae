#include "LumoRTCLibWrapper/platform/system/Console.h"

#include <cstdio>
#include <memory>

#include "LumoRTCLibWrapper/util/LMIWCell.h"

namespace lumo {
namespace {

using SharedSink = std::shared_ptr<const Console::Sink>;

SharedSink standardErrorSink() {
  return std::make_shared<const Console::Sink>(
      [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
}

/// The sink in use; null while the console is silenced.
Cell<SharedSink>& sinkCell() {
  static Cell<SharedSink> cell(standardErrorSink());
  return cell;
}

}  // namespace

void Console::write(std::string_view format, FormatValues values) {
  if (const auto sink = sinkCell().get()) (*sink)(lumo::format(format, values));
}

void Console::setSink(Sink sink) {
  sinkCell().set(sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr);
}

void Console::resetSink() { sinkCell().set(standardErrorSink()); }

}  // namespace lumo
