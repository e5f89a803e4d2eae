#pragma once

#include <string>
#include <string_view>

#include "LumoRTCLibWrapper/util/LMIWFormat.h"

namespace lumo {

/// Writes a map for logs: one "key = value;" line per entry, in the order of the calls, in braces.
class MapText {
 public:
  MapText& add(std::string_view key, FormatValue value) {
    entries_ += "    ";
    entries_ += key;
    entries_ += " = ";
    value.appendTo(entries_);
    entries_ += ";\n";
    return *this;
  }

  std::string text() const { return "{\n" + entries_ + "}"; }

 private:
  std::string entries_;
};

}  // namespace lumo
