#pragma once

#include <string>

#include "examples/lumo-call/StatsReports.h"

/// A report as a table, one line for each stream.
std::string statsTable(const StatsReport& report);
