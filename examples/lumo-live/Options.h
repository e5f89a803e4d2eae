#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "examples/support/ExitCode.h"

/// What the command line asks for.
struct LiveOptions {
  std::size_t broadcasters = 3;        ///< scripted ones, 1 to 16
  double seconds = 1;                  ///< that each step lasts, above 0
  std::vector<std::string> addresses;  ///< to which the mix is pushed
  std::string pictures;                ///< folder for a picture of the mix per step; empty: none
  std::string roomId = "live";
  std::string linkedRoomId;  ///< a second live room, with which the first is linked; empty: none
  bool log = false;
};

/// Reads the command line. Writes the help to standard output, and what is wrong with the options, together
/// with the usage, to standard error.
std::variant<LiveOptions, ExitCode> parseOptions(int argc, const char* const* argv);
