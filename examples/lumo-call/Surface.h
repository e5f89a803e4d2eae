#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWViewDelegate.h"
#include "LumoRTCLocal/media/ViewPainter.h"

/// The kinds of surface that a host binds to video.
enum class SurfaceKind { native, flutter, unity };

/// One surface, and how a host of its kind draws it. Main thread only.
class Surface {
 public:
  /// @param frame  place in `root`, and size, in points; a snapshot has this size in pixels
  /// @param root   lays out what is a platform view
  static std::unique_ptr<Surface> create(SurfaceKind kind, const UIRect& frame, UIView& root);

  virtual ~Surface() = default;

  /// What is bound to a stream.
  virtual std::shared_ptr<LMRTCIWViewDelegate> view() const = 0;
  virtual bool isBound() const = 0;

  /// Takes the frames that wait, where the host has to ask for them: to be called in every tick of its
  /// drawing.
  virtual void tick() {}

  /// The frames that have reached the host.
  virtual std::uint64_t frames() const = 0;
  /// What the host shows now: the whole picture, upright, between black bars.
  virtual lumo::Bitmap snapshot() const = 0;
};
