#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"
#include "LumoRTCLibWrapper/util/LMIWJson.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConfigUtility.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

TEST(CodeTexts, EveryCodeHasItsTextAndAllOthersHaveDashes) {
  std::istringstream texts(
      "Set or remove WaterMark error|--|Open file Error|Interface not support yet|Create custom stream Error|"
      "Parameter Error|Stream Not Exist|Start Audio Mix Error|Remote User Not Joined RTCRoom|"
      "Local User Not Joined RTCRoom|Switch camera error|RTC Engine not init|"
      "LMRTCWrapper Engine has been destroy");
  std::int64_t code = -22;
  for (std::string text; std::getline(texts, text, '|'); ++code) {
    EXPECT_EQ(text, LMRTCIWCodeDefine::codeMessage(code)) << code;
  }
  EXPECT_EQ(-9, code);
  EXPECT_EQ("Success", LMRTCIWCodeDefine::codeMessage(0));
  for (const std::int64_t other :
       {std::int64_t{-1}, std::int64_t{-9}, std::int64_t{-23}, std::int64_t{1}, kLeast, kMost}) {
    EXPECT_EQ("--", LMRTCIWCodeDefine::codeMessage(other)) << other;
  }
}

TEST(Converter, KeepsTheTableOfEachConversionAndItsFallback) {
  struct Row {
    std::string name;
    std::int64_t (*convert)(std::int64_t);
    std::int64_t first;                 ///< what results[0] belongs to
    std::vector<std::int64_t> results;  ///< for the inputs in range
    std::int64_t fallback;
  };
  using C = LMRTCIWConverter;
  const std::vector<std::int64_t> swapped = {0, 2, 1, 4, 3};
  const std::vector<std::int64_t> presets = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  const std::vector<Row> rows = {
      {"toLMRTCJoinRoomType", C::toLMRTCJoinRoomType, 1, {1}, 0},
      {"toLMRTCIWNetworkQualityLevel", C::toLMRTCIWNetworkQualityLevel, 1, {1, 2, 3, 4, 5}, 0},
      {"toStreamType", C::toStreamType, 0, swapped, -1},
      {"toLMRTCIWStreamType", C::toLMRTCIWStreamType, 0, swapped, -1},
      {"toLMRTCIWVideoFps", C::toLMRTCIWVideoFps, 0, {0, 1, 2, 3}, 1},
      {"toLMRTCVideoFPS", C::toLMRTCVideoFPS, 0, {0, 1, 2, 3}, -1},
      {"toLMRTCVideoSizePreset", C::toLMRTCVideoSizePreset, 0, presets, -1},
      {"toLMRTCMixLayoutMode", C::toLMRTCMixLayoutMode, 1, {1, 2, 3}, 2},
      {"toLMRTCVideoRenderMode", C::toLMRTCVideoRenderMode, 2, {2}, 1},
      {"toLMRTCMixerMode", C::toLMRTCMixerMode, 0, {0, 1, 2}, 1},
      {"toLMRTCDeviceCamera", C::toLMRTCDeviceCamera, 0, {2, 1}, 0},
      {"toLMRTCAudioQuality", C::toLMRTCAudioQuality, 0, {0, 1, 2}, 0},
      {"toLMRTCAudioScenario", C::toLMRTCAudioScenario, 0, {0, 1, 2}, 0},
      {"toLMRTCAudioCodecType", C::toLMRTCAudioCodecType, 0, {0}, 111},
  };
  for (const Row& row : rows) {
    const auto end = row.first + static_cast<std::int64_t>(row.results.size());
    for (std::int64_t in = row.first; in < end; ++in) {
      EXPECT_EQ(row.results[static_cast<std::size_t>(in - row.first)], row.convert(in))
          << row.name << " " << in;
    }
    for (const std::int64_t in : {row.first - 1, end, std::int64_t{-1}, std::int64_t{111}, kLeast, kMost}) {
      EXPECT_EQ(row.fallback, row.convert(in)) << row.name << " " << in;
    }
  }
}

TEST(ConfigUtility, RelatesPresetsToSizesAndFrameRateValuesToFramesPerSecond) {
  const std::vector<std::pair<std::int64_t, std::int64_t>> sizes = {
      {144, 176}, {180, 180}, {144, 256}, {180, 240},  {180, 320},  {240, 240},
      {240, 320}, {360, 360}, {360, 480}, {360, 640},  {480, 480},  {480, 640},
      {480, 720}, {480, 848}, {720, 960}, {720, 1280}, {1080, 1920}};
  for (std::int64_t preset = 0; preset < 17; ++preset) {
    const auto [first, second] = sizes[static_cast<std::size_t>(preset)];
    EXPECT_EQ(preset, LMRTCIWConfigUtility::getVideoResolution(first, second));
    EXPECT_EQ(first, LMRTCIWConfigUtility::getVideoSize(preset, 0));
    EXPECT_EQ(second, LMRTCIWConfigUtility::getVideoSize(preset, 1));
  }
  EXPECT_EQ(-1, LMRTCIWConfigUtility::getVideoResolution(176, 144));
  const std::vector<std::int64_t> rates = {10, 15, 24, 30};
  for (std::int64_t fps = 0; fps < 4; ++fps) {
    EXPECT_EQ(rates[static_cast<std::size_t>(fps)], LMRTCIWConfigUtility::getVideoFPS(fps));
  }
  for (const std::int64_t other : {std::int64_t{-1}, std::int64_t{17}, kLeast, kMost}) {
    EXPECT_EQ(0, LMRTCIWConfigUtility::getVideoSize(other, 0)) << other;
    EXPECT_EQ(0, LMRTCIWConfigUtility::getVideoSize(16, other)) << other;
    EXPECT_EQ(0, LMRTCIWConfigUtility::getVideoFPS(other)) << other;
  }
  EXPECT_EQ(0, LMRTCIWConfigUtility::getVideoSize(16, 2));
  EXPECT_EQ(0, LMRTCIWConfigUtility::getVideoFPS(4));
}

TEST(Records, FreshRecordsDescribeTheirDefaults) {
  EXPECT_EQ("{\n  \"mediaType\" : 2,\n  \"role\" : 0,\n  \"joinType\" : 0\n}",
            LMRTCIWRoomSetup().description());
  EXPECT_EQ("{\n  \"AudioQuality\" : 0,\n  \"AudioScenario\" : 0,\n  \"recordingVolume\" : 100\n}",
            LMRTCIWAudioConfig().description());
  EXPECT_EQ("{\n  \"minBitrate\" : 0,\n  \"maxBitrate\" : 0,\n  \"fps\" : 1,\n  \"resolution\" : 11\n}",
            LMRTCIWVideoConfig().description());
  EXPECT_EQ(
      "{\n  \"type\" : 0,\n  \"userId\" : \"u1\",\n  \"tag\" : \"null\",\n  \"x\" : 0,\n  \"y\" : 0,\n"
      "  \"width\" : 480,\n  \"height\" : 640\n}",
      LMRTCIWCustomLayout("u1").description());

  LMRTCIWEngineSetup setup;
  setup.statsReportInterval = -3;
  EXPECT_EQ(
      "{\n  \"reconnectable\" : false,\n  \"statsReportInterval\" : -3,\n  \"enableSRTP\" : false,\n"
      "  \"audioSetup\" : \"{\\n  \\\"type\\\" : 111,\\n  \\\"mixOtherAppsAudio\\\" : true\\n}\",\n"
      "  \"videoSetup\" : \"{\\n  \\\"enableTinyStream\\\" : true\\n}\"\n}",
      setup.description());
}

TEST(Json, EscapesWhatTextMayNotHoldAndReplacesBrokenUtf8) {
  const std::string broken = "\xEF\xBF\xBD";
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"a\"b\\c/", "a\\\"b\\\\c/"},
      {"\b\f\n\r\t", "\\b\\f\\n\\r\\t"},
      {std::string("\0\x1F\x7F", 3), "\\u0000\\u001f\x7F"},
      {"é€😀", "é€😀"},
      {"\xC3", broken},                                                // cut off
      {"\xC0\xAF", broken + broken},                                   // overlong
      {"\xED\xA0\x80", broken + broken + broken},                      // surrogate
      {"\xF4\x90\x80\x80x", broken + broken + broken + broken + "x"},  // above U+10FFFF
      {"\xE2\x82x", broken + broken + "x"},
  };
  for (const auto& [in, out] : rows) {
    EXPECT_EQ("{\n  \"k\" : \"" + out + "\"\n}", lumo::JsonObject().add("k", in).text());
  }
}

TEST(Format, FillsPlaceholdersInOrderAndCopiesTheRest) {
  struct Described {
    std::string description() const { return "<described>"; }
  };
  const std::vector<std::string> list = {"a", "b"};
  const std::optional<std::string> absent;
  const std::vector<std::pair<std::string, std::string>> rows = {
      {lumo::format("%@,%zd,%ld,%d|", {1, kLeast, std::numeric_limits<std::uint64_t>::max(), true}),
       "1,-9223372036854775808,18446744073709551615,1|"},
      {lumo::format("%@ %@ %@", {"text", absent, std::nullopt}), "text (null) (null)"},
      {lumo::format("%@ %@", {list, std::vector<std::string>{}}), "(a, b) ()"},
      {lumo::format("%@ %@", {0.1, Described{}}), "0.1 <described>"},
      {lumo::format("%@%@", {"only one"}), "only one(null)"},
      {lumo::format("100%% of %s, 5% %", {"x"}), "100% of %s, 5% %"},
      {lumo::format("%@", {"%@"}), "%@"},
  };
  for (const auto& [got, expected] : rows) EXPECT_EQ(expected, got);
}

}  // namespace
