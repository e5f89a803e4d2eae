#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

/// Where one video stream stands in the live mix.
class LMRTCIWCustomLayout {
 public:
  /// The camera of a user.
  explicit LMRTCIWCustomLayout(std::string userId) : userId_(std::move(userId)) {}
  /// @param streamType  0: the user's camera; any other number: the user's stream of that tag
  LMRTCIWCustomLayout(std::int64_t streamType, std::string userId, std::optional<std::string> tag)
      : type_(streamType), userId_(std::move(userId)), tag_(std::move(tag)) {}

  std::int64_t type() const { return type_; }
  const std::string& userId() const { return userId_; }
  const std::optional<std::string>& tag() const { return tag_; }

  // Place in the mixed picture, in pixels from its top left corner; not range-checked.
  std::int64_t x = 0;
  std::int64_t y = 0;
  std::int64_t width = 480;
  std::int64_t height = 640;

  /// JSON text with "type", "userId", "tag" ("null" without one), "x", "y", "width" and "height".
  std::string description() const;

 private:
  std::int64_t type_ = 0;
  std::string userId_;
  std::optional<std::string> tag_;
};
