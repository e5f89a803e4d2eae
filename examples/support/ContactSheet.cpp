#include "examples/support/ContactSheet.h"

#include <algorithm>

#include "examples/support/Cairo.h"

namespace {

constexpr int kMargin = 16;
constexpr int kLabelHeight = 32;
constexpr double kFontSize = 16;
constexpr std::size_t kPicturesPerRow = 4;

/// The cell of one picture, label and margins to the right and below included.
struct CellSize {
  int width = 0;
  int height = 0;
};

CellSize cellSize(const std::vector<SheetPicture>& pictures) {
  CellSize size;
  for (const SheetPicture& picture : pictures) {
    size.width = std::max(size.width, picture.bitmap.width + kMargin);
    size.height = std::max(size.height, picture.bitmap.height + kLabelHeight + kMargin);
  }
  return size;
}

Surface makeSheet(const CellSize& cell, std::size_t pictures) {
  const auto columns = static_cast<int>(std::min(pictures, kPicturesPerRow));
  const auto rows = static_cast<int>((pictures + kPicturesPerRow - 1) / kPicturesPerRow);
  return {cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns * cell.width + kMargin,
                                     rows * cell.height + kMargin),
          cairo_surface_destroy};
}

/// Cairo's pixels are numbers of 32 bits; blue comes first in memory on the little-endian machines of our
/// targets.
void drawBitmap(cairo_t* context, const lumo::Bitmap& bitmap, double x, double y) {
  const Surface source(
      cairo_image_surface_create_for_data(const_cast<std::uint8_t*>(bitmap.bgra.data()), CAIRO_FORMAT_RGB24,
                                          bitmap.width, bitmap.height, bitmap.width * 4),
      cairo_surface_destroy);
  cairo_set_source_surface(context, source.get(), x, y);
  cairo_paint(context);
}

void drawLabel(cairo_t* context, const std::string& text, double centerX, double baseline) {
  cairo_text_extents_t extents;
  cairo_text_extents(context, text.c_str(), &extents);
  cairo_set_source_rgb(context, 0.1, 0.1, 0.1);
  cairo_move_to(context, centerX - extents.width / 2 - extents.x_bearing, baseline);
  cairo_show_text(context, text.c_str());
}

}  // namespace

std::string writeContactSheet(const std::string& path, const std::vector<SheetPicture>& pictures) {
  const CellSize cell = cellSize(pictures);
  const Surface sheet = makeSheet(cell, pictures.size());
  const Context context(cairo_create(sheet.get()), cairo_destroy);
  cairo_set_source_rgb(context.get(), 0.94, 0.94, 0.94);
  cairo_paint(context.get());
  cairo_select_font_face(context.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(context.get(), kFontSize);
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const lumo::Bitmap& bitmap = pictures[i].bitmap;
    const int x = kMargin + static_cast<int>(i % kPicturesPerRow) * cell.width;
    const int y = kMargin + static_cast<int>(i / kPicturesPerRow) * cell.height;
    drawBitmap(context.get(), bitmap, x, y);
    drawLabel(context.get(), pictures[i].label, x + bitmap.width / 2.0, y + bitmap.height + kFontSize * 1.4);
  }
  const cairo_status_t status = cairo_surface_write_to_png(sheet.get(), path.c_str());
  if (status == CAIRO_STATUS_SUCCESS) return {};
  return path + " cannot be written: " + cairo_status_to_string(status);
}
