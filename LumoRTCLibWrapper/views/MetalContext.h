#pragma once

#include <cstdint>
#include <memory>

/// A part of a GPU texture, in texels.
struct MetalRegion {
  std::uint64_t x = 0;
  std::uint64_t y = 0;
  std::uint64_t z = 0;
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t depth = 0;
};

/// Where a Unity host keeps the GPU textures of a view. The library stores it and never looks inside.
struct MetalContext {
  /// The host's texture objects, one per plane.
  std::shared_ptr<void> yTexture;
  std::shared_ptr<void> uTexture;
  std::shared_ptr<void> vTexture;
  MetalRegion region;       ///< the Y plane
  MetalRegion smallRegion;  ///< a chroma plane, of half size
  std::int32_t textureWidth = 0;
  std::int32_t textureHeight = 0;
};
