#include "examples/lumo-call/Gallery.h"

#include <algorithm>

#include "LumoRTCLocal/sdk/LocalVideoView.h"

namespace {

constexpr double kViewWidth = 240;
constexpr double kViewHeight = 320;

}  // namespace

std::shared_ptr<LMRTCIWView> Gallery::viewOf(const std::string& userId) {
  const auto known = std::ranges::find(entries_, userId, &Entry::userId);
  if (known != entries_.end()) return known->view;
  const double x = kViewWidth * static_cast<double>(entries_.size());
  const auto view = LMRTCIWView::create({x, 0, kViewWidth, kViewHeight});
  root_->addSubview(view);
  entries_.push_back({userId, view});
  return view;
}

std::vector<Gallery::Shown> Gallery::shown() const {
  std::vector<Shown> result;
  for (const auto& [userId, view] : entries_) {
    const auto video = std::dynamic_pointer_cast<lumo::LocalVideoView>(view->rtcVideoView());
    if (video) result.push_back({{userId, video->snapshot()}, video->frameCount()});
  }
  return result;
}
