#pragma once

#include <memory>
#include <string>
#include <vector>

/// A point in view coordinates: origin at the top left, y downwards.
struct UIPoint {
  double x = 0;
  double y = 0;

  bool operator==(const UIPoint&) const = default;
  /// "{x, y}", for logs.
  std::string description() const;
};

/// A rectangle in view coordinates: points, origin at the top left, y downwards.
struct UIRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const UIRect&) const = default;
};

class UIView;

/// Mirrors the view tree into a real toolkit. Every call comes on the thread that changes the view: the main
/// thread.
class UIViewBackend {
 public:
  virtual ~UIViewBackend() = default;

  virtual void didAddSubview(UIView& parent, UIView& child) = 0;
  virtual void didRemoveFromSuperview(UIView& parent, UIView& child) = 0;
  virtual void didChangeFrame(UIView& view) = 0;

  /// Installs the backend of the process; null (the default) keeps the tree in memory only. Views made before
  /// keep reporting to whatever is installed when they change.
  static void install(std::shared_ptr<UIViewBackend> backend);
};

/// The system's view class: a rectangle in a tree of views, laid out from the root down. Main thread only. A
/// parent owns its subviews; a view must be owned by a shared pointer before it is added to a parent.
class UIView : public std::enable_shared_from_this<UIView> {
 public:
  explicit UIView(const UIRect& frame = {});
  virtual ~UIView();
  UIView(const UIView&) = delete;
  UIView& operator=(const UIView&) = delete;

  /// Position in the parent, and size.
  const UIRect& frame() const { return frame_; }
  /// Moves or resizes the view; a change of size asks for a new layout.
  void setFrame(const UIRect& frame);

  UIView* superview() const { return superview_; }
  /// In drawing order: the last lies on top.
  const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
  /// Puts `view` on top of the other subviews, after taking it from its present parent. A null view, or one
  /// that contains this view, is ignored.
  void addSubview(const std::shared_ptr<UIView>& view);
  /// Takes the view out of its parent, if it has one.
  void removeFromSuperview();

  /// Asks for `layoutSubviews` at the next `layoutIfNeeded`.
  void setNeedsLayout() { needsLayout_ = true; }
  /// Lays out this view if that is due, then its subviews.
  void layoutIfNeeded();
  /// Places the subviews; does nothing here, subclasses override it and call this first.
  virtual void layoutSubviews() {}

 private:
  bool isInside(const UIView& view) const;

  UIRect frame_;
  UIView* superview_ = nullptr;
  std::vector<std::shared_ptr<UIView>> subviews_;
  bool needsLayout_ = true;
};
