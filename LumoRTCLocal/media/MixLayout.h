#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "LumoRTCLocal/media/Picture.h"

/// Where the pictures of a mix stand, in pixels of the mixed picture. All places are even, in position and
/// size, so that the chroma planes meet without a seam. The functions write to `places`, which keeps its
/// memory from one call to the next.
namespace lumo {

/// An even grid over the whole picture: as many columns as rows or one more (one more row where the picture
/// is higher than wide), filled row by row; a last row with fewer pictures is centred.
void placeInGrid(std::size_t count, std::int32_t width, std::int32_t height, std::vector<PixelRect>& places);

/// The first picture fills everything. The others, a quarter of the width and of the height each less the
/// margins between them, stand over it, from the lower right corner upwards, then in further columns to the
/// left. Those beyond the twelfth do not fit and get an empty place, as do all of them in a picture that is
/// lower than its margins.
void placeSuspended(std::size_t count, std::int32_t width, std::int32_t height,
                    std::vector<PixelRect>& places);

}  // namespace lumo
