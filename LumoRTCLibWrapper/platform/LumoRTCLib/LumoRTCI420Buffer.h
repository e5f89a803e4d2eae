#pragma once

#include <cstdint>
#include <memory>

/// A picture in planar YUV 4:2:0 (I420, BT.601 limited range): a full-size Y plane, then a U and a V plane of
/// half width and half height, both rounded up. Rows may be padded: a stride is the number of bytes from one
/// row to the next and is at least the plane's width. A buffer is written by whoever made it and read-only
/// once it is handed on.
class LumoRTCI420Buffer {
 public:
  /// A buffer of its own memory with tight rows: strideY is `width`, strideU and strideV are `(width + 1) /
  /// 2`. The contents are undefined.
  /// @param width,height  pixels, at least 1
  static std::shared_ptr<LumoRTCI420Buffer> create(std::int32_t width, std::int32_t height);

  /// A buffer over foreign planes, which `owner` keeps alive.
  static std::shared_ptr<LumoRTCI420Buffer> wrap(std::int32_t width, std::int32_t height, std::uint8_t* y,
                                                 std::int32_t strideY, std::uint8_t* u, std::int32_t strideU,
                                                 std::uint8_t* v, std::int32_t strideV,
                                                 std::shared_ptr<const void> owner);

  std::int32_t width() const { return width_; }
  std::int32_t height() const { return height_; }
  std::int32_t chromaWidth() const { return (width_ + 1) / 2; }
  std::int32_t chromaHeight() const { return (height_ + 1) / 2; }

  const std::uint8_t* dataY() const { return y_; }
  const std::uint8_t* dataU() const { return u_; }
  const std::uint8_t* dataV() const { return v_; }
  std::uint8_t* mutableDataY() { return y_; }
  std::uint8_t* mutableDataU() { return u_; }
  std::uint8_t* mutableDataV() { return v_; }

  std::int32_t strideY() const { return strideY_; }
  std::int32_t strideU() const { return strideU_; }
  std::int32_t strideV() const { return strideV_; }

 private:
  LumoRTCI420Buffer() = default;

  std::int32_t width_ = 0;
  std::int32_t height_ = 0;
  std::uint8_t* y_ = nullptr;
  std::uint8_t* u_ = nullptr;
  std::uint8_t* v_ = nullptr;
  std::int32_t strideY_ = 0;
  std::int32_t strideU_ = 0;
  std::int32_t strideV_ = 0;
  std::shared_ptr<const void> owner_;
};
