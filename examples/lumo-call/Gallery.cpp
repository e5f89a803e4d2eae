#include "examples/lumo-call/Gallery.h"

#include <algorithm>

namespace {

constexpr double kViewWidth = 240;
constexpr double kViewHeight = 320;

}  // namespace

Surface& Gallery::surfaceOf(const std::string& userId) {
  const auto known = std::ranges::find(entries_, userId, &Entry::userId);
  if (known != entries_.end()) return *known->surface;
  const double x = kViewWidth * static_cast<double>(entries_.size());
  entries_.push_back({userId, Surface::create(kind_, {x, 0, kViewWidth, kViewHeight}, *root_)});
  return *entries_.back().surface;
}

void Gallery::tick() {
  for (const Entry& entry : entries_) entry.surface->tick();
}

std::vector<Gallery::Shown> Gallery::shown() const {
  std::vector<Shown> result;
  for (const auto& [userId, surface] : entries_) {
    if (surface->isBound()) result.push_back({{userId, surface->snapshot()}, surface->frames()});
  }
  return result;
}
