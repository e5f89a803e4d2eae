#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <optional>
#include <string>

#include "examples/support/ExitCode.h"

// What the command lines of the demos have in common. Each has one source that reads its own.

/// Writes what is wrong with the options, and the usage, to standard error.
inline ExitCode refuse(const CLI::App& app, const std::string& problem) {
  std::cerr << app.get_name() << ": " << problem << "\n\n" << app.help();
  return {2};
}

/// Reads the options. @return how the program ends instead of running: after the help, or as refused
inline std::optional<ExitCode> readOptions(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(std::max(argc, 1), argv);  // a process may be started without even its name
    return std::nullopt;
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return ExitCode{0};
  } catch (const CLI::ParseError& error) {
    return refuse(app, error.what());
  }
}

// Checks of one value: what is wrong with it, or nothing

inline auto secondsUpTo(double most, const char* mostInWords) {
  return [most, mostInWords](const std::string& text) {
    double seconds = 0;
    const bool isInRange = CLI::detail::lexical_cast(text, seconds) && seconds > 0 && seconds <= most;
    return isInRange ? "" : text + " is not a number of seconds above 0, up to " + mostInWords;
  };
}

inline std::string checkRoomId(const std::string& text) { return text.empty() ? "a room needs an id" : ""; }
