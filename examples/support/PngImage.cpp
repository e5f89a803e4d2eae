#include "examples/support/PngImage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "examples/support/Cairo.h"

namespace {

/// The pixels of whatever format the file has, premultiplied.
Surface asArgb(cairo_surface_t* picture) {
  Surface argb(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, cairo_image_surface_get_width(picture),
                                          cairo_image_surface_get_height(picture)),
               cairo_surface_destroy);
  const Context context(cairo_create(argb.get()), cairo_destroy);
  cairo_set_source_surface(context.get(), picture, 0, 0);
  cairo_paint(context.get());
  cairo_surface_flush(argb.get());
  return argb;
}

/// Divides the colours of a premultiplied pixel by its alpha.
void unmultiply(std::uint8_t* pixel) {
  const int alpha = pixel[3];
  if (alpha == 0) return;
  std::for_each(pixel, pixel + 3, [alpha](std::uint8_t& color) {
    color = static_cast<std::uint8_t>(std::min((color * 255 + alpha / 2) / alpha, 255));
  });
}

}  // namespace

std::shared_ptr<const UIImage> readPng(const std::string& path) {
  const Surface file(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
  if (cairo_surface_status(file.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  const Surface argb = asArgb(file.get());
  const auto image = std::make_shared<UIImage>();
  image->width = cairo_image_surface_get_width(argb.get());
  image->height = cairo_image_surface_get_height(argb.get());
  const auto rowBytes = static_cast<std::ptrdiff_t>(image->width) * 4;
  const std::uint8_t* row = cairo_image_surface_get_data(argb.get());
  for (std::int32_t y = 0; y < image->height; ++y, row += cairo_image_surface_get_stride(argb.get()))
    image->bgra.insert(image->bgra.end(), row, row + rowBytes);
  for (std::size_t i = 0; i < image->bgra.size(); i += 4) unmultiply(&image->bgra[i]);
  return image;
}
