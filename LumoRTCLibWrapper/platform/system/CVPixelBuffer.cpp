#include "LumoRTCLibWrapper/platform/system/CVPixelBuffer.h"

#include <array>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWRecycler.h"

namespace {

class MemoryBuffer final : public CVPixelBuffer {
 public:
  MemoryBuffer(std::size_t width, std::size_t height, Attributes attributes)
      : width_(width), height_(height), attributes_(std::move(attributes)), pixels_(4 * width * height) {}

  std::size_t width() const override { return width_; }
  std::size_t height() const override { return height_; }
  std::uint32_t pixelFormat() const override { return kCVPixelFormatType_32BGRA; }
  const Attributes& attributes() const override { return attributes_; }
  void lockBaseAddress() override {}
  void unlockBaseAddress() override {}
  std::uint8_t* baseAddress(std::size_t) override { return pixels_.data(); }
  std::size_t bytesPerRow(std::size_t) const override { return 4 * width_; }

 private:
  std::size_t width_;
  std::size_t height_;
  Attributes attributes_;
  std::vector<std::uint8_t> pixels_;
};

class PlanarBuffer final : public CVPixelBuffer {
 public:
  explicit PlanarBuffer(std::shared_ptr<const LumoRTCI420Buffer> picture) : picture_(std::move(picture)) {}

  std::size_t width() const override { return static_cast<std::size_t>(picture_->width()); }
  std::size_t height() const override { return static_cast<std::size_t>(picture_->height()); }
  std::uint32_t pixelFormat() const override { return kCVPixelFormatType_420YpCbCr8Planar; }
  const Attributes& attributes() const override {
    static const Attributes none;
    return none;
  }
  void lockBaseAddress() override {}
  void unlockBaseAddress() override {}
  std::uint8_t* baseAddress(std::size_t plane) override {
    const std::array planes = {picture_->dataY(), picture_->dataU(), picture_->dataV()};
    return plane < planes.size() ? const_cast<std::uint8_t*>(planes[plane]) : nullptr;
  }
  std::size_t bytesPerRow(std::size_t plane) const override {
    const std::array strides = {picture_->strideY(), picture_->strideU(), picture_->strideV()};
    return plane < strides.size() ? static_cast<std::size_t>(strides[plane]) : 0;
  }

 private:
  std::shared_ptr<const LumoRTCI420Buffer> picture_;
};

lumo::Cell<std::shared_ptr<const CVPixelBuffer::Factory>>& factoryCell() {
  static lumo::Cell<std::shared_ptr<const CVPixelBuffer::Factory>> cell;
  return cell;
}

}  // namespace

CVPixelBufferRef CVPixelBuffer::createBGRA(std::size_t width, std::size_t height,
                                           const Attributes& attributes) {
  if (width == 0 || height == 0) return nullptr;
  if (const auto factory = factoryCell().get()) return (*factory)(width, height, attributes);
  return std::make_shared<MemoryBuffer>(width, height, attributes);
}

CVPixelBufferRef CVPixelBuffer::wrap(std::shared_ptr<const LumoRTCI420Buffer> picture) {
  static const auto recycler = std::make_shared<lumo::Recycler>();
  return picture ? lumo::makeRecycled<PlanarBuffer>(recycler, std::move(picture)) : nullptr;
}

void CVPixelBuffer::setFactory(Factory factory) {
  factoryCell().set(factory ? std::make_shared<const Factory>(std::move(factory)) : nullptr);
}
