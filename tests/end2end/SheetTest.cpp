#include <cstdlib>

#include "examples/lumo-call/Gallery.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

/// The demo's surfaces in a call of their own.
struct SheetCall : CallTest {
  void TestBody() override {}
  std::vector<Gallery::Shown> run(SurfaceKind kind) {
    Gallery gallery(kind);
    join();
    publish(kVideo);
    EXPECT_EQ(0, engine->setLocalViewWithViewDelegate(gallery.surfaceOf("me").view()));
    for (const char* const name : {"anna", "ben"}) {
      addPublishing(name, Media::video);
      advance(0us);
      EXPECT_EQ(0, engine->subscribe(name, kVideo));
      EXPECT_EQ(0, engine->setRemoteViewWithViewDelegate(gallery.surfaceOf(name).view(), name));
    }
    gallery.layout();
    engine->setCameraCaptureOrientation(1);
    advance(2s);
    gallery.tick();
    auto shown = gallery.shown();
    engine->removeLocalView();
    for (const char* const name : {"anna", "ben"}) engine->removeRemoteView(name);
    return shown;
  }
};

TEST(SheetTest, TheSameCallLooksTheSameOnEverySurface) {
  const auto native = SheetCall().run(SurfaceKind::native);
  ASSERT_EQ(3u, native.size());
  for (const SurfaceKind kind : {SurfaceKind::flutter, SurfaceKind::unity}) {
    const auto other = SheetCall().run(kind);
    ASSERT_EQ(3u, other.size());
    for (std::size_t i = 0; i < native.size(); ++i) {
      EXPECT_EQ(native[i].picture.label, other[i].picture.label);
      EXPECT_EQ(native[i].frames, other[i].frames);
      const auto& [width, height, expected] = native[i].picture.bitmap;
      const auto& [otherWidth, otherHeight, actual] = other[i].picture.bitmap;
      ASSERT_EQ(std::pair(width, height), std::pair(otherWidth, otherHeight));
      int worst = 0;
      for (std::size_t byte = 0; byte < expected.size(); ++byte)
        worst = std::max(worst, std::abs(expected[byte] - actual[byte]));
      EXPECT_LE(worst, kind == SurfaceKind::unity ? 0 : 4) << native[i].picture.label;
    }
  }
}

}  // namespace
}  // namespace lumo::test
