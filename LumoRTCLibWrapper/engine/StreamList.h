#pragma once

#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"

namespace lumo {

/// Puts a list of streams into a log line: their stream ids.
struct StreamList {
  const std::vector<std::shared_ptr<LMRTCInputStream>>& streams;

  std::string description() const {
    std::string text = "(";
    for (const auto& stream : streams) {
      if (text.size() > 1) text += ", ";
      text += stream ? stream->streamId() : std::string("(null)");
    }
    return text += ')';
  }
};

}  // namespace lumo
