#include "LumoRTCLibWrapper/platform/system/UIView.h"

#include <algorithm>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"

namespace {

lumo::Cell<std::shared_ptr<UIViewBackend>>& backendCell() {
  static lumo::Cell<std::shared_ptr<UIViewBackend>> cell;
  return cell;
}

}  // namespace

std::string UIPoint::description() const { return lumo::format("{%@, %@}", {x, y}); }

void UIViewBackend::install(std::shared_ptr<UIViewBackend> backend) { backendCell().set(std::move(backend)); }

UIView::UIView(const UIRect& frame) : frame_(frame) {}

UIView::~UIView() {
  for (const auto& view : subviews_) view->superview_ = nullptr;
}

void UIView::setFrame(const UIRect& frame) {
  if (frame == frame_) return;
  if (frame.width != frame_.width || frame.height != frame_.height) setNeedsLayout();
  frame_ = frame;
  if (const auto backend = backendCell().get()) backend->didChangeFrame(*this);
}

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
  if (!view || isInside(*view)) return;
  view->removeFromSuperview();
  view->superview_ = this;
  subviews_.push_back(view);
  setNeedsLayout();
  if (const auto backend = backendCell().get()) backend->didAddSubview(*this, *view);
}

void UIView::removeFromSuperview() {
  if (!superview_) return;
  UIView& parent = *superview_;
  superview_ = nullptr;
  const auto place = std::ranges::find(parent.subviews_, this, &std::shared_ptr<UIView>::get);
  const auto self = *place;  // the parent may be the last owner
  parent.subviews_.erase(place);
  parent.setNeedsLayout();
  if (const auto backend = backendCell().get()) backend->didRemoveFromSuperview(parent, *this);
}

void UIView::layoutIfNeeded() {
  if (needsLayout_) {
    needsLayout_ = false;
    layoutSubviews();
  }
  for (const auto& view : subviews_) view->layoutIfNeeded();
}

bool UIView::isInside(const UIView& view) const {
  for (const UIView* ancestor = this; ancestor; ancestor = ancestor->superview_) {
    if (ancestor == &view) return true;
  }
  return false;
}
