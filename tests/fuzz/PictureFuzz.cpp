#include <array>
#include <cmath>
#include <utility>

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
  const Int stride = width + padding, chromaStride = (width + 1) / 2 + padding;
  auto& [y, u, v] = *memory;
  y.resize(static_cast<std::size_t>(stride * height - padding));
  u.resize(static_cast<std::size_t>(chromaStride * ((height + 1) / 2) - padding));
  v = u;
  for (auto& plane : *memory) {
    for (auto& byte : plane)
      byte = seed == 0 ? kBlank : static_cast<std::uint8_t>((seed = seed * 69069 + 1) >> 24);
  }
  return Buffer::wrap(width, height, y.data(), stride, u.data(), chromaStride, v.data(), chromaStride,
                      memory);
}

/// Checks that every pixel of the upper left `width` x `height` of `to` is that of `from` at the place that
/// `place` gives, and that nothing was written between the rows.
template <class Place>
void expect(const Buffer& from, const Buffer& to, Int width, Int height, const Place& place) {
  for (std::size_t i = 0; i < 3; ++i) {
    const Plane source = planes(from)[i], result = planes(to)[i];
    const Int columns = i == 0 ? width : (width + 1) / 2, rows = i == 0 ? height : (height + 1) / 2;
    for (Int y = 0; y < rows; ++y) {
      for (Int x = 0; x < columns; ++x) {
        const auto [fromX, fromY] = place(source, x, y);
        check(result.at(x, y) == source.at(fromX, fromY), "pixels go where they belong");
      }
      for (Int x = result.width; x < result.stride && y + 1 < result.height; ++x)
        check(result.at(x, y) == kBlank, "padding stays as it was");
    }
  }
}

void expectTurned(const Buffer& from, const Buffer& to, Int rotation) {
  check(to.width() == (lumo::swapsSides(rotation) ? from.height() : from.width()), "turning swaps sides");
  expect(from, to, to.width(), to.height(), [rotation](const Plane& plane, Int x, Int y) {
    const Int right = plane.width - 1, bottom = plane.height - 1;
    return rotation == 90    ? std::pair(y, bottom - x)
           : rotation == 180 ? std::pair(right - x, bottom - y)
           : rotation == 270 ? std::pair(right - y, x)
                             : std::pair(x, y);
  });
}

/// Checks the pixels against the definition of BT.601.
void expectBgra(const Buffer& from, const std::uint8_t* bgra, Int stride) {
  const auto [luma, chromaU, chromaV] = planes(from);
  for (Int y = 0; y < from.height(); ++y) {
    for (Int x = 0; x < 4 * from.width(); ++x) {
      const double grey = 255.0 / 219 * (luma.at(x / 4, y) - 16);
      const int u = chromaU.at(x / 8, y / 2) - 128, v = chromaV.at(x / 8, y / 2) - 128;
      const double colors[] = {grey + 2.017 * u, grey - 0.392 * u - 0.813 * v, grey + 1.596 * v, 255};
      const double error = bgra[y * stride + x] - std::clamp(colors[x % 4], 0.0, 255.0);
      check(std::abs(error) <= 3, "colours are those of BT.601");  // libyuv calculates in fixed point
    }
    for (Int x = 4 * from.width(); x < stride && y + 1 < from.height(); ++x)
      check(bgra[y * stride + x] == kBlank, "padding stays as it was");
  }
}

void checkTurning(const Buffer& from, Int rotation, Int padding, lumo::UprightConverter& upright) {
  const auto tight = lumo::rotatedCopy(from, rotation);
  expectTurned(from, *tight, rotation);
  const auto to = make(tight->width(), tight->height(), padding, 0);
  LumoRTCI420Rotate(from.dataY(), from.strideY(), from.dataU(), from.strideU(), from.dataV(), from.strideV(),
                    to->mutableDataY(), to->strideY(), to->mutableDataU(), to->strideU(), to->mutableDataV(),
                    to->strideV(), from.width(), from.height(), rotation);
  expectTurned(from, *to, rotation);
  const Int stride = 4 * to->width() + padding;
  std::vector<std::uint8_t> tiled(static_cast<std::size_t>(stride * to->height() - padding), kBlank),
      whole = tiled;
  LumoRTCI420ToARGB(to->dataY(), to->strideY(), to->dataU(), to->strideU(), to->dataV(), to->strideV(),
                    whole.data(), stride, to->width(), to->height());
  expectBgra(*to, whole.data(), stride);
  upright.convert(from, rotation, tiled.data(), stride);
  check(tiled == whole, "an upright picture is the turned one, converted");
}

struct Pixels : LumoRTCVideoFrameBuffer {
  std::shared_ptr<const Buffer> toI420() override { return picture; }
  std::shared_ptr<const Buffer> picture;
};

/// A Unity frame that is no larger than its picture shows the upper left of it, in tight rows.
void checkUnity(const std::shared_ptr<Buffer>& picture, Int width, Int height) {
  const auto view = LMRTCIWUnityView::create();
  const auto pixels = std::make_shared<Pixels>();
  pixels->picture = picture;
  view->renderFrame({std::make_shared<LumoRTCVideoFrame>(LumoRTCVideoFrame{pixels}), width, height, 0, 0});
  const auto frame = view->getCurrentFrame();
  const Int chroma = (width + 1) / 2;
  check(frame->strideY() == width && frame->strideU() == chroma && frame->strideV() == chroma,
        "rows are tight");
  expect(*picture, *frame->yuvBuffer, width, height, [](auto&, auto x, auto y) { return std::pair(x, y); });
}

/// Mirrors and flips `from`, and scales a plain picture of its size: that one has to stay plain.
void checkCopies(const Buffer& from, Int width, Int height) {
  lumo::FramePool pool;
  expect(from, *lumo::mirrored(from, pool), from.width(), from.height(),
         [](const Plane& plane, auto x, auto y) { return std::pair(plane.width - 1 - x, y); });
  expect(from, *lumo::flipped(from, pool), from.width(), from.height(),
         [](const Plane& plane, auto x, auto y) { return std::pair(x, plane.height - 1 - y); });
  const auto plain = make(from.width(), from.height(), 5, 0);
  const auto isPlain = [](int value) { return std::abs(value - kBlank) <= 3; };  // in fixed point, too
  const auto scaled = lumo::scaled(lumo::viewOf(*plain), width, height, pool);
  for (const Plane& plane : planes(*scaled)) {
    check(std::all_of(plane.bytes, plane.bytes + plane.width * plane.height, isPlain), "plain stays plain");
  }
  const auto boxed = lumo::letterboxed(plain, width, height, pool);
  const auto [left, top, innerWidth, innerHeight] =
      lumo::aspectFit(from.width(), from.height(), width, height);
  const Plane luma = planes(*boxed)[0];
  for (Int y = 0; y < height; ++y) {
    for (Int x = 0; x < width; ++x) {
      const bool isInside = x >= left && y >= top && x < left + innerWidth && y < top + innerHeight;
      check(isInside ? isPlain(luma.at(x, y)) : luma.at(x, y) == 16, "the bars are black");
    }
  }
}

/// @param first  the first of the places that stand beside each other
void checkPlaces(const std::vector<lumo::PixelRect>& places, std::size_t first, Int width, Int height) {
  const auto isEmpty = [](const auto& place) { return place.width == 0 || place.height == 0; };
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto& [x, y, w, h] = places[i];
    check(((x | y | w | h) & 1) == 0 && w >= 0 && h >= 0, "places are even");
    check(isEmpty(places[i]) || (x >= 0 && y >= 0 && x + w <= width && y + h <= height), "places are inside");
    for (std::size_t k = first; k < i && !isEmpty(places[i]); ++k) {
      const auto& other = places[k];
      const bool isBeside = x >= other.x + other.width || other.x >= x + w;
      check(isBeside || y >= other.y + other.height || other.y >= y + h || isEmpty(other), "they are apart");
    }
  }
}

void checkLayouts(std::size_t count, Int width, Int height) {
  std::vector<lumo::PixelRect> places = {{1, 1, 1, 1}};
  lumo::placeInGrid(count, width, height, places);
  check(places.size() == count, "every picture has a place in the grid");
  checkPlaces(places, 0, width, height);
  for (const auto& place : places)  // there are seven columns and rows at most
    check(place.width > width / 7 - 4 && place.height > height / 7 - 4, "the grid leaves nobody out");
  lumo::placeSuspended(count, width, height, places);
  check(places.size() == count, "every picture has a place over the first");
  checkPlaces(places, 1, width, height);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LMRTCProvider::install(std::make_shared<lumo::LocalProvider>(nullptr, nullptr));
  lumo::fuzz::Input input(data, size);
  const auto count = static_cast<std::size_t>(input.take(0, 40));
  const Int mixWidth = 2 * input.take(1, 4096);
  checkLayouts(count, mixWidth, 2 * input.take(1, 4096));
  lumo::UprightConverter upright;
  for (int i = 0; i < 2; ++i) {
    const bool isLarge = input.take(0, 7) == 7;
    const Int width = input.take(1, isLarge ? 700 : 70), height = input.take(1, isLarge ? 300 : 70);
    const Int padding = input.take(0, 40);
    const auto picture = make(width, height, padding, input.take<std::uint32_t>() | 1U);
    const Int rotation = input.take(-1, 4) * 90;
    checkTurning(*picture, rotation, input.take(0, 40), upright);
    const Int part = input.take(1, width);
    checkUnity(picture, part, input.take(1, height));
    const Int newWidth = input.take(1, 300);
    checkCopies(*picture, newWidth, input.take(1, 300));
  }
  return 0;
}
