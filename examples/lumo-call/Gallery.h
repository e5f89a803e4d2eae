#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "examples/lumo-call/Surface.h"
#include "examples/support/ContactSheet.h"

/// The surfaces of a call, in a row. Main thread only.
class Gallery {
 public:
  /// @param kind  of all its surfaces
  explicit Gallery(SurfaceKind kind) : kind_(kind) {}

  /// The surface of a user; made when it is asked for the first time.
  Surface& surfaceOf(const std::string& userId);

  /// Gives what has been bound since the last layout its size.
  void layout() { root_->layoutIfNeeded(); }
  /// Takes the frames that wait.
  void tick();

  struct Shown {
    SheetPicture picture;
    std::uint64_t frames = 0;  ///< that have reached the surface
  };
  /// What the surfaces show now, in the order in which they were made; a surface that is not bound is left
  /// out.
  std::vector<Shown> shown() const;

 private:
  struct Entry {
    std::string userId;
    std::unique_ptr<Surface> surface;
  };

  const SurfaceKind kind_;
  const std::shared_ptr<UIView> root_ = std::make_shared<UIView>();
  std::vector<Entry> entries_;
};
