#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <map>

#include "tests/stress/World.h"

int main(int count, char** arguments) try {
  std::map<std::string, double> options = {{"--seed", 1}, {"--seconds", 2}, {"--threads", 4}};
  if (const char* seconds = std::getenv("LUMO_STRESS_SECONDS")) options["--seconds"] = std::stod(seconds);
  for (int i = 1; i < count; i += 2) options.at(arguments[i]) = std::stod(arguments[i + 1]);
  alarm(static_cast<unsigned>(options["--seconds"]) + 60);  // threads may wait for each other for ever
  lumo::stress::run(static_cast<std::uint64_t>(options["--seed"]), options["--seconds"],
                    static_cast<int>(options["--threads"]));
  return 0;
} catch (const std::exception&) {
  std::cerr << "usage: lumo-stress [--seed N] [--seconds S] [--threads T]\n";
  return 2;
}
