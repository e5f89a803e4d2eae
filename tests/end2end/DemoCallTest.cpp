#include <algorithm>

#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "examples/lumo-call/Gallery.h"
#include "examples/lumo-call/Options.h"
#include "examples/lumo-call/StatsPlot.h"
#include "examples/lumo-call/StatsTable.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

using Words = std::vector<const char*>;

std::variant<CallOptions, ExitCode> parse(Words words) {
  words.insert(words.begin(), "lumo-call");
  return parseOptions(static_cast<int>(words.size()), words.data());
}

TEST(DemoOptionsTest, NetworkEchoAndPlotAreReadAndWrongValuesRefused) {
  const auto parsed = parse({"--loss", "2.5", "--delay", "40", "--jitter", "10", "--bandwidth", "900",
                             "--echo", "60", "--stats", "--plot", "a.svg"});
  const auto& options = std::get<CallOptions>(parsed);
  EXPECT_EQ((NetworkModel{40ms, 10ms, 0.025, 900'000}), options.network);
  EXPECT_EQ(60, options.echo);
  EXPECT_TRUE(options.stats);
  for (const Words& words : {Words{"--loss", "101"}, {"--loss", "a"}, {"--plot", "a.jpg"}, {"--watermark"}}) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(2, std::get<ExitCode>(parse(words)).value) << words.front();
    const std::string message = ::testing::internal::GetCapturedStderr();
    EXPECT_LT(message.find(words.front()), message.find("Usage")) << message;
  }
}

TEST_F(CallTest, TheDemoShowsTheStatisticsOfEveryStream) {
  StatsReports reports;
  const auto listener = std::make_shared<LMRTCIWStatsDelegate>();
  reports.fill(*listener, "me");
  engine->setStatsDelegate(listener);
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  join();
  publish(kBoth);
  engine->subscribe("anna", kBoth);
  advance(3100ms);
  EXPECT_FALSE(reports.takeSettled()) << "it may still grow";
  const auto report = reports.takeSettled();
  ASSERT_TRUE(report);
  EXPECT_FALSE(reports.takeSettled());
  const std::string table = statsTable(*report);
  for (const char* const name : {"network, sent", "network, received", "me microphone", "me camera",
                                 "anna microphone", "anna camera", "15    480x640"}) {
    EXPECT_NE(std::string::npos, table.find(name)) << name << " in\n" << table;
  }
  const TempFolder folder;
  EXPECT_EQ("", writeStatsPlot(folder.path("p.svg"), reports.all()));
  const std::string plot = readFile(folder.path("p.svg"));
  EXPECT_TRUE(plot.starts_with("<?xml") && plot.ends_with("</svg>\n"));
  EXPECT_NE("", writeStatsPlot(folder.path("no/p.png"), reports.all()));
}

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
      EXPECT_EQ(std::pair(width, height), std::pair(otherWidth, otherHeight));
      const auto isSame = [&](int a, int b) {
        return std::abs(a - b) <= (kind == SurfaceKind::unity ? 0 : 4);
      };
      EXPECT_TRUE(std::ranges::equal(expected, actual, isSame)) << native[i].picture.label;
    }
  }
}

}  // namespace
}  // namespace lumo::test
