#include "examples/lumo-call/StatsPlot.h"

#include <cairo-svg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <optional>
#include <string_view>

#include "examples/support/Cairo.h"

namespace {

/// One chart.
struct Chart {
  const char* title;
  std::optional<double> StreamFigures::*figure;
  double leastTop;  ///< of the axis, so that noise around zero does not fill the chart
};

constexpr Chart kCharts[] = {{"Bit rate, kbit/s", &StreamFigures::kilobits, 100},
                             {"Frame rate, pictures per second", &StreamFigures::framesPerSecond, 10},
                             {"Packet loss, %", &StreamFigures::lossPercent, 5},
                             {"Round trip, ms", &StreamFigures::roundTripMs, 20},
                             {"Sound level, 0 to 100", &StreamFigures::level, 20}};

constexpr double kWidth = 1040;
constexpr double kLeft = 72;
constexpr double kTop = 40;
constexpr double kChartWidth = 700;
constexpr double kChartHeight = 130;
constexpr double kChartStep = 180;
constexpr double kLegendLeft = kLeft + kChartWidth + 28;
constexpr double kLegendStep = 22;
constexpr double kTextSize = 13;
constexpr double kHeight = kTop + kChartStep * std::size(kCharts) + 12;
constexpr double kMostSteps = 5;  // of an upright axis
constexpr double kMostTimeSteps = 12;

struct Color {
  double red, green, blue;
};
constexpr Color kAxis{0.25, 0.25, 0.25};
constexpr Color kGrid{0.88, 0.88, 0.88};
constexpr std::array<Color, 8> kPalette = {{{0.00, 0.45, 0.70},
                                            {0.84, 0.37, 0.00},
                                            {0.00, 0.62, 0.45},
                                            {0.80, 0.47, 0.65},
                                            {0.90, 0.62, 0.00},
                                            {0.34, 0.71, 0.91},
                                            {0.50, 0.30, 0.10},
                                            {0.30, 0.30, 0.30}}};

/// From 0 to `top` in steps that people can read.
struct Axis {
  double top = 1;
  double step = 1;
};

Axis axisFor(double highest, double mostSteps) {
  const double power = std::pow(10, std::floor(std::log10(highest / mostSteps)));
  for (const double factor : {1, 2, 5, 10}) {
    const double step = factor * power;
    if (highest <= step * mostSteps) return {std::ceil(highest / step) * step, step};
  }
  return {highest, highest};
}

/// The same colour and dashes wherever a stream is drawn.
void setPen(cairo_t* context, std::size_t stream) {
  const Color& color = kPalette[stream % kPalette.size()];
  cairo_set_source_rgb(context, color.red, color.green, color.blue);
  const double dash = 5;
  cairo_set_dash(context, &dash, stream / kPalette.size() % 2 == 0 ? 0 : 1, 0);
  cairo_set_line_width(context, 2);
}

void setThinPen(cairo_t* context, const Color& color) {
  cairo_set_source_rgb(context, color.red, color.green, color.blue);
  cairo_set_dash(context, nullptr, 0, 0);
  cairo_set_line_width(context, 1);
}

void drawLine(cairo_t* context, double fromX, double fromY, double toX, double toY) {
  cairo_move_to(context, fromX, fromY);
  cairo_line_to(context, toX, toY);
  cairo_stroke(context);
}

/// @param anchor  0: the text begins at x; 0.5: x is its middle; 1: it ends there
void drawText(cairo_t* context, std::string_view text, double x, double y, double anchor) {
  const std::string terminated(text);
  cairo_text_extents_t extents;
  cairo_text_extents(context, terminated.c_str(), &extents);
  cairo_move_to(context, x - extents.x_advance * anchor, y);
  cairo_show_text(context, terminated.c_str());
}

std::string number(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

/// Up to the last report.
Axis timeAxis(const std::vector<StatsReport>& reports) {
  const double end = reports.empty() ? 1 : std::max(reports.back().seconds, 1.0);
  return {end, axisFor(end, kMostTimeSteps).step};
}

/// The streams of all reports, in the order in which they came.
std::vector<std::string> streamNames(const std::vector<StatsReport>& reports) {
  std::vector<std::string> names;
  for (const StatsReport& report : reports) {
    for (const StreamFigures& stream : report.streams) {
      if (std::ranges::find(names, stream.name) == names.end()) names.push_back(stream.name);
    }
  }
  return names;
}

std::optional<double> figureOf(const StatsReport& report, const std::string& name, const Chart& chart) {
  const auto stream = std::ranges::find(report.streams, name, &StreamFigures::name);
  return stream == report.streams.end() ? std::nullopt : (*stream).*chart.figure;
}

/// Draws one chart after another into the same context.
class Painter {
 public:
  Painter(cairo_t* context, const std::vector<StatsReport>& reports)
      : context_(context), reports_(reports), names_(streamNames(reports)), time_(timeAxis(reports)) {}

  void paint() {
    cairo_set_source_rgb(context_, 1, 1, 1);
    cairo_paint(context_);
    cairo_select_font_face(context_, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context_, kTextSize);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    for (std::size_t i = 0; i < std::size(kCharts); ++i)
      paintChart(kCharts[i], kTop + kChartStep * static_cast<double>(i));
    setThinPen(context_, kAxis);
    drawText(context_, "Time, s", kLeft + kChartWidth / 2, kHeight - 14, 0.5);
    for (std::size_t i = 0; i < names_.size(); ++i) paintLegend(i);
  }

 private:
  double x(double seconds) const { return kLeft + seconds / time_.top * kChartWidth; }

  void paintChart(const Chart& chart, double top) {
    double highest = chart.leastTop;
    for (const StatsReport& report : reports_) {
      for (const StreamFigures& stream : report.streams)
        highest = std::max(highest, (stream.*chart.figure).value_or(0));
    }
    const Axis axis = axisFor(highest, kMostSteps);
    paintGrid(chart, top, axis);
    for (std::size_t i = 0; i < names_.size(); ++i) paintCurve(chart, top, axis, i);
  }

  void paintGrid(const Chart& chart, double top, const Axis& axis) {
    const double bottom = top + kChartHeight;
    for (double value = 0; value < axis.top + axis.step / 2; value += axis.step) {
      const double y = std::round(bottom - value / axis.top * kChartHeight) + 0.5;
      setThinPen(context_, value == 0 ? kAxis : kGrid);
      drawLine(context_, kLeft, y, kLeft + kChartWidth, y);
      setThinPen(context_, kAxis);
      drawText(context_, number(value), kLeft - 8, y + kTextSize * 0.35, 1);
    }
    for (double second = 0; second <= time_.top; second += time_.step) {
      drawLine(context_, std::round(x(second)) + 0.5, bottom, std::round(x(second)) + 0.5, bottom + 5);
      drawText(context_, number(second), x(second), bottom + 19, 0.5);
    }
    drawText(context_, chart.title, kLeft, top - 10, 0);
  }

  void paintCurve(const Chart& chart, double top, const Axis& axis, std::size_t stream) {
    setPen(context_, stream);
    const auto eachPoint = [&](auto draw) {
      for (const StatsReport& report : reports_) {
        const auto value = figureOf(report, names_[stream], chart);
        draw(value.has_value(), x(report.seconds), top + kChartHeight * (1 - value.value_or(0) / axis.top));
      }
    };
    bool goesOn = false;
    eachPoint([&](bool isThere, double pointX, double pointY) {
      if (isThere && goesOn) cairo_line_to(context_, pointX, pointY);
      if (isThere && !goesOn) cairo_move_to(context_, pointX, pointY);
      goesOn = isThere;
    });
    cairo_stroke(context_);
    eachPoint([&](bool isThere, double pointX, double pointY) {
      if (!isThere) return;
      cairo_arc(context_, pointX, pointY, 2.5, 0, 7);
      cairo_fill(context_);
    });
  }

  void paintLegend(std::size_t stream) {
    const double y = kTop + 8 + kLegendStep * static_cast<double>(stream);
    setPen(context_, stream);
    drawLine(context_, kLegendLeft, y, kLegendLeft + 26, y);
    setThinPen(context_, kAxis);
    drawText(context_, names_[stream], kLegendLeft + 34, y + kTextSize * 0.35, 0);
  }

  cairo_t* const context_;
  const std::vector<StatsReport>& reports_;
  const std::vector<std::string> names_;
  const Axis time_;
};

}  // namespace

bool isPlotPath(const std::string& path) { return path.ends_with(".png") || path.ends_with(".svg"); }

std::string writeStatsPlot(const std::string& path, const std::vector<StatsReport>& reports) {
  const bool isSvg = path.ends_with(".svg");
  const Surface surface(isSvg ? cairo_svg_surface_create(path.c_str(), kWidth, kHeight)
                              : cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(kWidth),
                                                           static_cast<int>(kHeight)),
                        cairo_surface_destroy);
  const Context context(cairo_create(surface.get()), cairo_destroy);
  Painter(context.get(), reports).paint();
  cairo_surface_flush(surface.get());
  cairo_status_t status = cairo_surface_status(surface.get());
  if (status == CAIRO_STATUS_SUCCESS && isSvg) {
    cairo_surface_finish(surface.get());
    status = cairo_surface_status(surface.get());
  } else if (status == CAIRO_STATUS_SUCCESS) {
    status = cairo_surface_write_to_png(surface.get(), path.c_str());
  }
  if (status == CAIRO_STATUS_SUCCESS) return {};
  return path + " cannot be written: " + cairo_status_to_string(status);
}
