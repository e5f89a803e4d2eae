#include <cmath>
#include <span>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLocal/media/MediaFileReader.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/local/sdk/LocalSdkTest.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace lumo;
using Role = LumoRTCLocal::Role;
using Media = LumoRTCLocal::Media;

constexpr YuvColor kBlack{16, 128, 128};

/// Whose test picture shows its background there: "1" to "4", "-" for `background`, "?" for anything else.
std::string shownAt(const LumoRTCI420Buffer& picture, std::int32_t x, std::int32_t y,
                    const YuvColor& background) {
  const YuvColor seen = test::colorAt(picture, x, y);
  const auto isNear = [&seen](const YuvColor& color) {
    return std::abs(seen.y - color.y) + std::abs(seen.u - color.u) + std::abs(seen.v - color.v) < 12;
  };
  if (isNear(background)) return "-";
  for (std::uint32_t source = 0; source < 5; ++source) {
    if (isNear(testPictureColor(source))) return std::to_string(source);
  }
  return "?";
}

class LiveTest : public LocalSdkTest {
 protected:
  using Points = std::vector<std::pair<std::int32_t, std::int32_t>>;

  ParticipantPtr broadcaster(const std::string& userId, std::uint32_t source) {
    const auto joined = add(userId, {.role = Role::broadcaster, .sourceNumber = source});
    EXPECT_EQ(0, joined->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo));
    return joined;
  }
  std::shared_ptr<LMRTCInputStream> live(std::int64_t mediaType) const {
    for (const auto& stream : room->getLiveStreams()) {
      if (stream->mediaType() == mediaType) return stream;
    }
    return nullptr;
  }
  void watch(bool tiny = false) {
    const auto mixed = live(LMRTCMediaTypeVideo);
    std::dynamic_pointer_cast<LMRTCVideoInputStream>(mixed)->setVideoView(view);
    ASSERT_EQ(0, tiny ? subscribe({}, {mixed}) : subscribe({mixed}));
  }
  /// What the view shows at the points a little later, after the size of the picture.
  std::string shown(const Points& points, const YuvColor& background = kBlack) {
    local->advance(300ms);
    const auto picture = view->picture();
    if (!picture) return "nothing";
    std::string text = std::to_string(picture->width()) + "x" + std::to_string(picture->height()) + " ";
    for (const auto& [x, y] : points) text += shownAt(*picture, x, y, background);
    return text;
  }
  std::uint64_t framesInASecond() {
    local->advance(101ms);
    const std::uint64_t before = view->frameCount();
    local->advance(1s);
    return view->frameCount() - before;
  }
  /// How loud each of the first three tones is on the speaker a little later, in tenths.
  std::string levels() {
    std::vector<std::int16_t> heard;
    local->advance(20ms);
    local->setSpeaker([&heard](const AudioBlock& block, Microseconds) {
      heard.insert(heard.end(), block.samples.begin(), block.samples.end());
    });
    local->advance(100ms);
    local->setSpeaker({});
    std::string tenths;
    for (int source = 0; source < 3; ++source)
      tenths += std::to_string(std::lround(test::toneLevel(heard, 300 + 100 * source) / 0.2 * 10)) + " ";
    return tenths;
  }
  std::int64_t publishLive() {
    return answerOf([&](auto done) {
      user()->publishDefaultLiveStreams([this, done](bool, std::int64_t code, const auto& handle) {
        info = handle;
        done(code);
      });
    });
  }
  std::int64_t configure(const LMRTCMixConfig& config) {
    return answerOf([&](auto done) { info->setMixConfig(config, done); });
  }
  std::int64_t enableCdn(bool enabled) {
    return answerOf([&](auto done) {
      info->enableInnerCDN(enabled, [=, this](bool success, std::int64_t code) {
        EXPECT_EQ(success && enabled, success && room->getCDNStream()) << "the event comes first";
        plain(done)(success, code);
      });
    });
  }
  /// "succeeded", "kicked" or the code of the failure.
  std::string switchTo(std::int64_t role, const LMRTCMixConfig* config = nullptr) {
    std::string outcome;
    const auto succeeded = [&](const std::shared_ptr<LMRTCLiveInfo>& handle) {
      if (handle) info = handle;
      outcome += "succeeded";
    };
    const auto failed = [&outcome](std::int64_t code) { outcome += std::to_string(code); };
    const auto kicked = [&] { outcome += room->localUser() ? "kicked" : "kicked too late"; };
    if (role == LMRTCRoleTypeBroadcaster) user()->switchToBroadcaster(config, succeeded, failed, kicked);
    if (role == LMRTCRoleTypeAudience)
      user()->switchToAudienceOnSucceed([&] { succeeded(nullptr); }, failed, kicked);
    EXPECT_EQ("", outcome) << "completed inside the call";
    local->advance(0us);
    return outcome;
  }
  static LMRTCMixConfig layoutMode(std::int64_t mode) {
    LMRTCMixConfig config;
    config.layoutMode = mode;
    return config;
  }
  static LMRTCMixConfig size(std::int64_t width, std::int64_t height) {
    LMRTCMixConfig config;
    config.mediaConfig.videoConfig.videoLayout = {.fps = 0, .width = width, .height = height, .bitrate = 0};
    return config;
  }

  std::shared_ptr<LMRTCLiveInfo> info;
  std::shared_ptr<LocalVideoView> view = std::make_shared<LocalVideoView>();
};

TEST_F(LiveTest, ThePictureFollowsLayoutModeRenderModeBackgroundAndSize) {
  const auto anna = broadcaster("anna", 1);
  const auto bob = broadcaster("bob", 2);
  const auto carl = broadcaster("carl", 3);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(100u, local->advance(1s)) << "but for the speaker's clock: nobody watches";
  watch();
  EXPECT_EQ("360x640 1123", shown({{20, 4}, {340, 4}, {312, 484}, {312, 328}})) << "anna large, cropped";
  EXPECT_EQ(15u, framesInASecond());

  EXPECT_EQ(0, anna->setMixConfig(size(480, 640)));
  EXPECT_EQ(0, bob->setMixConfig(layoutMode(LMRTCMixLayoutModeAdaptive)));
  EXPECT_EQ(0, bob->disableVideo(true));
  EXPECT_EQ("480x640 11--33-",
            shown({{4, 4}, {236, 316}, {244, 4}, {476, 300}, {124, 324}, {356, 636}, {100, 630}}))
      << "a camera that is off keeps its place";
  EXPECT_EQ(0, bob->disableVideo(false));

  ASSERT_EQ(LocalCodeSuccess, unsubscribe({live(LMRTCMediaTypeVideo)}));
  ASSERT_EQ(0, leave());
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  ASSERT_EQ(0, publishLive());
  watch();
  EXPECT_EQ("480x640 1123300",
            shown({{4, 4}, {236, 316}, {244, 4}, {4, 324}, {236, 636}, {244, 324}, {476, 636}}));

  LMRTCMixConfig custom = layoutMode(LMRTCMixLayoutModeCustom);
  custom.customMode = true;
  custom.customLayouts = {{stream("bob", 1), 0, 0, 240, 240}, {stream("carl", 1), 120, 200, 400, 200}};
  ASSERT_TRUE(custom.mediaConfig.videoConfig.setBackgroundColor(0xFFFF00));
  const YuvColor yellow{210, 16, 146};
  ASSERT_EQ(0, configure(custom));
  const Points placed = {{4, 4}, {236, 4}, {4, 190}, {124, 202}, {124, 396}, {4, 300}, {476, 190}};
  EXPECT_EQ("480x640 22233--", shown(placed, yellow)) << "both fill their places, carl on top";
  LMRTCMixConfig whole;
  whole.mediaConfig.videoConfig.videoExtend.renderMode = LMRTCVideoRenderModeWhole;
  ASSERT_EQ(0, configure(whole));
  EXPECT_EQ("480x640 -2----3",
            shown({{4, 4}, {34, 4}, {4, 190}, {476, 396}, {4, 300}, {224, 202}, {250, 202}}, yellow));

  watch(true);
  EXPECT_EQ("180x320 2-3", shown({{2, 2}, {2, 150}, {82, 102}}, yellow)) << "places go by the normal size";
  EXPECT_EQ(10u, framesInASecond());
}

TEST_F(LiveTest, RefusedConfigurationsLeaveTheMixAsItIs) {
  const auto anna = broadcaster("anna", 1);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  ASSERT_EQ(0, publishLive());
  watch();
  const auto refuse = [&](std::int64_t code, const auto& change) {
    LMRTCMixConfig config = layoutMode(LMRTCMixLayoutModeAdaptive);
    change(config, config.mediaConfig.videoConfig);
    EXPECT_EQ(code, configure(config));
    EXPECT_EQ("360x640 11", shown({{20, 4}, {340, 4}})) << "still anna large";
  };
  refuse(LocalCodeMixSize, [](auto&, auto& video) { video.videoLayout.width = -2; });
  refuse(LocalCodeMixFrameRate, [](auto&, auto& video) { video.tinyVideoLayout.fps = 61; });
  refuse(LocalCodeUnknownStream, [](auto& config, auto&) { config.customMixAudios = {{nullptr}}; });
  refuse(LocalCodeMixPlacement, [this](auto& config, auto&) {
    config.customLayouts = {{stream("anna", 1), 0, 0, -4, 10}};
  });
}

TEST_F(LiveTest, TheSoundOfAllOrOfTheChosenIsHeardOnce) {
  const auto anna = broadcaster("anna", 1);
  const auto bob = broadcaster("bob", 2);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  ASSERT_EQ(0, publishLive());
  ASSERT_EQ(0, subscribe({live(LMRTCMediaTypeAudio)}));
  EXPECT_EQ("10 10 10 ", levels());
  LMRTCMixConfig chosen;
  chosen.customMode = true;
  chosen.customMixAudios = {{stream("bob")}, {stream("bob")}, {microphone()}};
  ASSERT_EQ(0, configure(chosen));
  EXPECT_EQ("10 0 10 ", levels());
  LMRTCMixConfig everybody;
  everybody.customMode = false;
  ASSERT_EQ(0, configure(everybody));
  EXPECT_EQ("10 10 10 ", levels());
}

TEST_F(LiveTest, TheMixedStreamsComeAndGoWithTheBroadcast) {
  const auto anna = add("anna", {.role = Role::broadcaster});
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(LocalCodeNotBroadcasting, anna->enableInnerCdn(true));
  EXPECT_EQ(0, anna->publishVideo());
  local->advance(0us);
  EXPECT_EQ(LMRTCMediaStreamTypeLive, live(LMRTCMediaTypeVideo)->mediaStreamType());
  EXPECT_EQ(0, anna->publishAudio());
  ASSERT_EQ(0, subscribe(room->getLiveStreams()));
  local->advance(50ms);
  EXPECT_EQ(0, anna->enableInnerCdn(true));
  local->advance(0us);
  EXPECT_EQ((Trace{"published anna_LumoCloudRTC:v of 1", "live r_live:a r_live:v of 0",
                   "published anna_LumoCloudRTC:a of 2", "first r_live:v", "first r_live:a", "cdn"}),
            takeTrace());
  const auto cdn = room->getCDNStream();
  ASSERT_TRUE(cdn);
  EXPECT_EQ(0, anna->unpublishVideo());
  EXPECT_EQ(0, anna->leave());
  local->advance(0us);
  EXPECT_EQ((Trace{"unpublished anna_LumoCloudRTC:v of 1", "unpublished anna_LumoCloudRTC:a of 0",
                   "live ended r_live:a r_live:v of 0", "cdn ended", "left anna"}),
            takeTrace());
  EXPECT_TRUE(room->getLiveStreams().empty() && !room->getCDNStream());
  EXPECT_EQ(LocalCodeStreamGone, subscribe({cdn}));
}

TEST_F(LiveTest, TheInnerCdnStreamHasItsOwnSizeAndFrameRate) {
  const auto anna = broadcaster("anna", 1);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  ASSERT_EQ(0, publishLive());
  ASSERT_EQ(0, enableCdn(true));
  const auto cdn = room->getCDNStream();
  ASSERT_TRUE(cdn);
  cdn->setVideoView(view);
  ASSERT_EQ(0, subscribe({cdn}));
  EXPECT_EQ("360x640 1", shown({{20, 4}}));
  EXPECT_EQ("10 10 0 ", levels());
  const auto setFormat = [&](std::int64_t preset, std::int64_t fps) {
    return answerOf([&](auto done) { cdn->setVideoConfig(preset, fps, plain(done)); });
  };
  EXPECT_EQ(LocalCodeCdnFormat, setFormat(17, 1));
  EXPECT_EQ(0, setFormat(11, 3));
  EXPECT_EQ("480x640 1", shown({{20, 4}}));
  EXPECT_EQ(30u, framesInASecond());
  cdn->setIsMute(true);
  EXPECT_EQ(0u, framesInASecond());
  EXPECT_EQ("0 0 0 ", levels());
  EXPECT_EQ(0, enableCdn(false));
  EXPECT_EQ(0u, framesInASecond());
}

TEST_F(LiveTest, TheMixIsPushedToSeveralAddresses) {
  const test::TempFolder folder;
  const auto anna = broadcaster("anna", 1);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  Trace failures;
  local->setPushFailed([&](const std::string& address, const std::string&) { failures.push_back(address); });
  ASSERT_EQ(0, publishLive());
  ASSERT_EQ(0, configure(size(240, 320)));
  const auto add = [&](const std::string& address) {
    return answerOf([&](auto done) { info->addPublishStreamUrl(address, done); });
  };
  const auto remove = [&](const std::string& address) {
    return answerOf([&](auto done) { info->removePublishStreamUrl(address, done); });
  };
  const std::string first = "file://" + folder.path("a.flv");
  const std::string second = "file://" + folder.path("b.ts");
  const std::string nowhere = "file://" + folder.path("none/c.mp4");
  EXPECT_EQ(0, add(first));
  EXPECT_EQ(LocalCodePushFailed, add(nowhere));
  EXPECT_EQ(LocalCodePushAddressTaken, add(first));
  EXPECT_EQ(LocalCodePushAddressMalformed, add("nonsense"));
  local->advance(1s);
  EXPECT_EQ(0, add(second));
  local->advance(1s);
  EXPECT_EQ(0, remove(first));
  EXPECT_EQ(LocalCodePushAddressUnknown, remove(first));
  EXPECT_EQ(0, answerOf([&](auto done) { user()->unpublishDefaultLiveStreams(plain(done)); }));
  EXPECT_EQ(0, anna->leave());
  EXPECT_EQ(LocalCodeNotBroadcasting, add(second));
  EXPECT_EQ(Trace{nowhere}, failures);

  for (const auto& [name, seconds] : {std::pair("a.flv", 2), std::pair("b.ts", 1)}) {
    SCOPED_TRACE(name);
    const auto reader = MediaFileReader::open(folder.path(name), MediaKind::both).reader;
    ASSERT_TRUE(reader);
    std::vector<std::shared_ptr<const LumoRTCI420Buffer>> pictures;
    while (const auto read = reader->nextPicture()) pictures.push_back(read->picture);
    EXPECT_NEAR(15 * seconds, static_cast<double>(pictures.size()), 1);
    EXPECT_EQ(std::pair(240, 320), std::pair(pictures.back()->width(), pictures.back()->height()));
    EXPECT_EQ("1", shownAt(*pictures.back(), 100, 4, kBlack));
    std::vector<std::int16_t> sound;
    while (const auto read = reader->nextSound())
      sound.insert(sound.end(), read->samples.begin(), read->samples.end());
    ASSERT_NEAR(48000.0 * seconds, static_cast<double>(sound.size()) / 2, 4096);
    for (const int tone : {300, 400})
      EXPECT_NEAR(0.2, test::toneLevel(std::span(sound).subspan(19200, 48000), tone), 0.02);
  }
}

TEST_F(LiveTest, RoleSwitchesSucceedFailOrEndOutsideTheRoom) {
  const auto anna = broadcaster("anna", 1);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(std::to_string(LocalCodeSameRole), switchTo(LMRTCRoleTypeAudience));
  const LMRTCMixConfig config = layoutMode(LMRTCMixLayoutModeAdaptive);
  EXPECT_EQ("succeeded", switchTo(LMRTCRoleTypeBroadcaster, &config));
  ASSERT_TRUE(info);
  ASSERT_EQ(0, publishLive());
  watch();
  EXPECT_EQ("360x640 110", shown({{4, 4}, {356, 316}, {4, 324}})) << "the grid that came with the switch";
  takeTrace();
  EXPECT_EQ(0, anna->switchRole(Role::audience));
  local->advance(0us);
  EXPECT_EQ((Trace{"unpublished anna_LumoCloudRTC:a anna_LumoCloudRTC:v of 0", "role 1 anna (in the room)"}),
            takeTrace());
  EXPECT_EQ("succeeded", switchTo(LMRTCRoleTypeAudience));
  EXPECT_TRUE(user()->streams().empty() && room->getLiveStreams().empty());
  EXPECT_EQ(LocalCodeNotABroadcaster, configure(config)) << "an old handle is of no use";

  takeTrace();
  ASSERT_EQ(0, local->failNext("switchToBroadcaster", LocalCodeKicked));
  EXPECT_EQ("kicked", switchTo(LMRTCRoleTypeBroadcaster));
  EXPECT_FALSE(room->localUser());
  EXPECT_TRUE(takeTrace().empty()) << "told by the switch alone";
  EXPECT_EQ(0, join("s", liveConfig(LMRTCRoleTypeBroadcaster))) << "out of the room";
}

}  // namespace
