#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "examples/support/ContactSheet.h"

/// The views of a call, in a row. Main thread only.
class Gallery {
 public:
  /// The view of a user; made when it is asked for the first time.
  std::shared_ptr<LMRTCIWView> viewOf(const std::string& userId);

  /// Gives what has been bound since the last layout its size.
  void layout() { root_->layoutIfNeeded(); }

  struct Shown {
    SheetPicture picture;
    std::uint64_t frames = 0;  ///< that have reached the view
  };
  /// What the views show now, in the order in which they were made; a view that was never bound is left out.
  std::vector<Shown> shown() const;

 private:
  struct Entry {
    std::string userId;
    std::shared_ptr<LMRTCIWView> view;
  };

  const std::shared_ptr<UIView> root_ = std::make_shared<UIView>();
  std::vector<Entry> entries_;
};
