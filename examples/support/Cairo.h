#pragma once

#include <cairo.h>

#include <memory>

// Cairo's objects as owners of themselves.

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;
