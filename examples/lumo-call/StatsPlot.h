#pragma once

#include <string>
#include <vector>

#include "examples/lumo-call/StatsReports.h"

/// Whether a plot can be written to a file of that name: its ending is .png or .svg.
bool isPlotPath(const std::string& path);

/// Draws what the reports say over time, one chart for each figure and one curve for each stream.
/// @param path  for which isPlotPath holds
/// @return what is wrong, for people; empty when the file has been written
std::string writeStatsPlot(const std::string& path, const std::vector<StatsReport>& reports);
