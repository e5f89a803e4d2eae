#pragma once

#include <string>
#include <vector>

#include "LumoRTCLocal/media/ViewPainter.h"

/// One picture of a contact sheet.
struct SheetPicture {
  std::string label;
  lumo::Bitmap bitmap;
};

/// Writes a PNG with the pictures side by side, at most four in a row, each over its label.
/// @return nothing, or what went wrong, for people
std::string writeContactSheet(const std::string& path, const std::vector<SheetPicture>& pictures);
