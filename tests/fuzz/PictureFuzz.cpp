#include <array>
#include <cmath>
#include <functional>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "LumoRTCLibWrapper/views/UprightConverter.h"
#include "LumoRTCLocal/media/MixLayout.h"
#include "LumoRTCLocal/sdk/LocalProvider.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using lumo::fuzz::check;
using Buffer = LumoRTCI420Buffer;
using Int = std::int32_t;
constexpr std::uint8_t kBlank = 0xCC;
constexpr int kRounding = 3;  // libyuv calculates in fixed point

struct Plane {
  const std::uint8_t* bytes;
  Int stride, width, height;
  int at(Int x, Int y) const { return bytes[static_cast<std::ptrdiff_t>(y) * stride + x]; }
};

std::array<Plane, 3> planes(const Buffer& p) {
  return {Plane{p.dataY(), p.strideY(), p.width(), p.height()},
          Plane{p.dataU(), p.strideU(), p.chromaWidth(), p.chromaHeight()},
          Plane{p.dataV(), p.strideV(), p.chromaWidth(), p.chromaHeight()}};
}

/// A picture of noise, or of kBlank where `seed` is 0. The last rows have no padding: reading beyond them is
/// seen.
std::shared_ptr<Buffer> make(Int width, Int height, Int padding, std::uint32_t seed) {
  const auto memory = std::make_shared<std::array<std::vector<std::uint8_t>, 3>>();
  auto& [y, u, v] = *memory;
  const Int stride = width + padding, halfWidth = (width + 1) / 2, halfHeight = (height + 1) / 2;
  y.resize(static_cast<std::size_t>(stride * height - padding));
  u.resize(static_cast<std::size_t>(stride * (halfHeight - 1) + halfWidth));
  v = u;
  for (auto* plane : {&y, &u, &v}) {
    for (auto& byte : *plane)
      byte = seed == 0 ? kBlank : static_cast<std::uint8_t>((seed = seed * 69069 + 1) >> 24);
  }
  return Buffer::wrap(width, height, y.data(), stride, u.data(), stride, v.data(), stride, memory);
}

/// Checks the upper left `width` x `height` of a plane against `pixel(x, y)`, and that nothing was written
/// between the rows.
template <class Pixel>
void expect(const Plane& plane, Int width, Int height, int rounding, const Pixel& pixel) {
  for (Int y = 0; y < height; ++y) {
    for (Int x = 0; x < width; ++x)
      check(std::abs(plane.at(x, y) - pixel(x, y)) <= rounding, "pixels are what and where they should be");
    for (Int x = plane.width; x < plane.stride && y + 1 < plane.height; ++x)
      check(plane.at(x, y) == kBlank, "padding stays as it was");
  }
}

/// The same for all planes of a picture, each against `pixel(plane, x, y)` of another picture.
template <class Pixel>
void expect(const Buffer& from, const Buffer& to, Int width, Int height, const Pixel& pixel) {
  for (std::size_t i = 0; i < 3; ++i) {
    const auto pixelOfPlane = [&, plane = planes(from)[i]](Int x, Int y) {
      return std::invoke(pixel, plane, x, y);
    };
    expect(planes(to)[i], i == 0 ? width : (width + 1) / 2, i == 0 ? height : (height + 1) / 2, 0,
           pixelOfPlane);
  }
}

void expectTurned(const Buffer& from, const Buffer& to, Int rotation) {
  check(to.width() == (lumo::swapsSides(rotation) ? from.height() : from.width()), "turning swaps sides");
  expect(from, to, to.width(), to.height(), [rotation](const Plane& plane, Int x, Int y) {
    const Int right = plane.width - 1, bottom = plane.height - 1;
    return rotation == 90    ? plane.at(y, bottom - x)
           : rotation == 180 ? plane.at(right - x, bottom - y)
           : rotation == 270 ? plane.at(right - y, x)
                             : plane.at(x, y);
  });
}

void checkTurning(const Buffer& from, Int rotation, Int padding, lumo::UprightConverter& upright) {
  const auto tight = lumo::rotatedCopy(from, rotation);
  expectTurned(from, *tight, rotation);
  const auto to = make(tight->width(), tight->height(), padding, 0);
  LumoRTCI420Rotate(from.dataY(), from.strideY(), from.dataU(), from.strideU(), from.dataV(), from.strideV(),
                    to->mutableDataY(), to->strideY(), to->mutableDataU(), to->strideU(), to->mutableDataV(),
                    to->strideV(), from.width(), from.height(), rotation);
  expectTurned(from, *to, rotation);
  const Int width = 4 * to->width(), stride = width + padding;
  std::vector<std::uint8_t> tiled(static_cast<std::size_t>(stride * to->height() - padding), kBlank),
      whole = tiled;
  LumoRTCI420ToARGB(to->dataY(), to->strideY(), to->dataU(), to->strideU(), to->dataV(), to->strideV(),
                    whole.data(), stride, to->width(), to->height());
  const auto bt601 = [source = planes(*to)](Int x, Int y) {
    const double grey = 255.0 / 219 * (source[0].at(x / 4, y) - 16);
    const int u = source[1].at(x / 8, y / 2) - 128, v = source[2].at(x / 8, y / 2) - 128;
    const double colors[] = {grey + 2.017 * u, grey - 0.392 * u - 0.813 * v, grey + 1.596 * v, 255};
    return std::clamp(colors[x % 4], 0.0, 255.0);
  };
  expect({whole.data(), stride, width, to->height()}, width, to->height(), kRounding, bt601);
  upright.convert(from, rotation, tiled.data(), stride);
  check(tiled == whole, "an upright picture is the turned one, converted");
}

struct Pixels : LumoRTCVideoFrameBuffer {
  std::shared_ptr<const Buffer> toI420() override { return picture; }
  std::shared_ptr<const Buffer> picture;
};

/// A Unity frame shows the upper left of its picture, in tight rows, and is black beyond.
void checkUnity(const std::shared_ptr<Buffer>& picture, Int width, Int height) {
  const auto view = LMRTCIWUnityView::create();
  const auto pixels = std::make_shared<Pixels>();
  pixels->picture = picture;
  view->renderFrame({std::make_shared<LumoRTCVideoFrame>(LumoRTCVideoFrame{pixels}), width, height, 0, 0});
  const auto frame = view->getCurrentFrame();
  check(frame->strideY() == width && frame->strideU() == (width + 1) / 2, "rows are tight");
  expect(*picture, *frame->yuvBuffer, width, height, [&picture](const Plane& plane, Int x, Int y) {
    if (x < plane.width && y < plane.height) return plane.at(x, y);
    return plane.bytes == picture->dataY() ? 16 : 128;
  });
}

/// Mirrors and flips `from`, and scales a plain picture of its size: that one has to stay plain.
void checkCopies(const Buffer& from, Int width, Int height) {
  lumo::FramePool pool;
  expect(from, *lumo::mirrored(from, pool), from.width(), from.height(),
         [](const Plane& plane, Int x, Int y) { return plane.at(plane.width - 1 - x, y); });
  expect(from, *lumo::flipped(from, pool), from.width(), from.height(),
         [](const Plane& plane, Int x, Int y) { return plane.at(x, plane.height - 1 - y); });
  const auto plain = make(from.width(), from.height(), 5, 0);
  const auto scaled = lumo::scaled(lumo::viewOf(*plain), width, height, pool);
  for (const Plane& plane : planes(*scaled))
    expect(plane, plane.width, plane.height, kRounding, [](Int, Int) { return kBlank; });
  const auto boxed = lumo::letterboxed(plain, width, height, pool);
  const auto inner = lumo::aspectFit(from.width(), from.height(), width, height);
  expect(planes(*boxed)[0], width, height, kRounding, [&inner](Int x, Int y) {
    const Int right = x - inner.x, down = y - inner.y;
    return right >= 0 && down >= 0 && right < inner.width && down < inner.height ? kBlank : 16;
  });
}

/// Places are even and inside; those from `first` on are apart. There are seven columns and rows at most.
void checkPlaces(const std::vector<lumo::PixelRect>& places, std::size_t first, Int width, Int height) {
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto& [x, y, w, h] = places[i];
    check(((x | y | w | h) & 1) == 0 && w >= 0 && h >= 0, "places are even");
    check(first == 1 || (w > width / 7 - 4 && h > height / 7 - 4), "the grid leaves nobody out");
    if (w == 0 || h == 0) continue;
    check(x >= 0 && y >= 0 && x + w <= width && y + h <= height, "places are inside");
    for (std::size_t k = first; k < i; ++k) {
      const auto& other = places[k];
      const bool isBeside = x >= other.x + other.width || other.x >= x + w;
      check(isBeside || y >= other.y + other.height || other.y >= y + h, "places are apart");
    }
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LMRTCProvider::install(std::make_shared<lumo::LocalProvider>(nullptr, nullptr));
  lumo::fuzz::Input input(data, size);
  const auto count = static_cast<std::size_t>(input.take(0, 40));
  const Int mixWidth = 2 * input.take(1, 4096);
  const Int mixHeight = 2 * input.take(1, 4096);
  std::vector<lumo::PixelRect> places, over;
  lumo::placeInGrid(count, mixWidth, mixHeight, places);
  lumo::placeSuspended(count, mixWidth, mixHeight, over);
  check(places.size() == count && over.size() == count, "every picture has a place");
  checkPlaces(places, 0, mixWidth, mixHeight);
  checkPlaces(over, 1, mixWidth, mixHeight);
  lumo::UprightConverter upright;
  for (int i = 0; i < 2; ++i) {
    const bool isLarge = input.take(0, 7) == 7;
    const Int width = input.take(1, isLarge ? 700 : 70), height = input.take(1, isLarge ? 300 : 70);
    const Int padding = input.take(0, 40);
    const auto picture = make(width, height, padding, input.take<std::uint32_t>() | 1U);
    const Int rotation = input.take(-1, 4) * 90;
    checkTurning(*picture, rotation, input.take(0, 40), upright);
    const Int part = input.take(1, width + 10);
    checkUnity(picture, part, input.take(1, height + 10));
    const Int newWidth = input.take(1, 300);
    checkCopies(*picture, newWidth, input.take(1, 300));
  }
  return 0;
}
