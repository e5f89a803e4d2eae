#pragma once

/// How a program ends when there is nothing to run.
struct ExitCode {
  int value = 0;
};
