#include <cmath>
#include <span>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLocal/media/MediaFileReader.h"
#include "tests/local/sdk/LocalSdkTest.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace lumo;
using Points = std::vector<std::pair<std::int32_t, std::int32_t>>;

/// The size, and what shows at the points, told by its brightness: the background of test picture "0" to "3",
/// "-" for black, "y" for yellow.
std::string seen(const LumoRTCI420Buffer& picture, const Points& points) {
  std::string text = std::to_string(picture.width()) + "x" + std::to_string(picture.height()) + " ";
  for (const auto& [x, y] : points) {
    for (const auto& [luma, name] :
         {std::pair(82, '0'), {145, '1'}, {41, '2'}, {169, '3'}, {16, '-'}, {210, 'y'}}) {
      if (std::abs(test::colorAt(picture, x, y).y - luma) < 12) text += name;
    }
  }
  return text;
}

/// How loud each of the first three tones is, in tenths.
std::string levelsOf(std::span<const std::int16_t> sound) {
  std::string tenths;
  for (const int tone : {300, 400, 500})
    tenths += std::to_string(std::lround(test::toneLevel(sound, tone) / 0.2 * 10)) + " ";
  return tenths;
}

class LiveTest : public LocalSdkTest {
 protected:
  LiveTest() {
    local->setSpeaker([this](const AudioBlock& block, Microseconds) {
      heard.insert(heard.end(), block.samples.begin(), block.samples.end());
    });
  }

  ParticipantPtr broadcaster(const std::string& userId, std::uint32_t source) {
    return addPublishing(userId, {.role = LumoRTCLocal::Role::broadcaster, .sourceNumber = source});
  }
  /// What the view shows a little later.
  std::string shown(const Points& points) {
    local->advance(300ms);
    return seen(*view->picture(), points);
  }
  std::uint64_t framesInASecond() {
    local->advance(101ms);
    const std::uint64_t before = view->frameCount();
    local->advance(1s);
    return view->frameCount() - before;
  }
  std::string levels() {
    local->advance(20ms);
    heard.clear();
    local->advance(100ms);
    return levelsOf(heard);
  }

  void joinAndPublish() {
    ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
    user()->publishDefaultLiveStreams([this](bool, std::int64_t, const auto& handle) { info = handle; });
    local->advance(0us);
    ASSERT_TRUE(info);
  }
  void watchMix(bool tiny) {
    const auto mix = room->getLiveStreams().back();
    show(mix, view);
    ASSERT_EQ(0, tiny ? subscribe({}, {mix}) : subscribe({mix}));
  }
  std::int64_t configure(const LMRTCMixConfig& config) {
    return answerOf([&](auto done) { info->setMixConfig(config, done); });
  }
  std::int64_t push(const std::string& address) {
    return answerOf([&](auto done) { info->addPublishStreamUrl(address, done); });
  }
  std::string becomeBroadcaster(const LMRTCMixConfig* config) {
    std::string outcome;
    user()->switchToBroadcaster(
        config, [&](const auto& handle) { info = handle, outcome += "succeeded"; },
        [&](std::int64_t code) { outcome += std::to_string(code); },
        [&] { outcome += room->localUser() ? "kicked" : "kicked too late"; });
    local->advance(0us);
    return outcome;
  }

  std::shared_ptr<LMRTCLiveInfo> info;
  std::vector<std::int16_t> heard;
};

TEST_F(LiveTest, PictureAndSoundFollowTheConfigurationOfTheMix) {
  const auto anna = broadcaster("anna", 1), bob = broadcaster("bob", 2), carl = broadcaster("carl", 3);
  joinAndPublish();
  EXPECT_EQ(100u, local->advance(1s)) << "but for the speaker's clock: nobody watches";
  watchMix(false);
  EXPECT_EQ("360x640 1123", shown({{20, 4}, {340, 4}, {312, 484}, {312, 328}})) << "anna large, cropped";
  EXPECT_EQ(15u, framesInASecond());

  LMRTCMixConfig grid;
  grid.layoutMode = LMRTCMixLayoutModeAdaptive;
  grid.mediaConfig.videoConfig.videoLayout = {.fps = 0, .width = 480, .height = 640, .bitrate = 0};
  EXPECT_EQ(0, anna->setMixConfig(grid));
  EXPECT_EQ(0, bob->disableVideo(true));
  EXPECT_EQ("480x640 11--30", shown({{4, 4}, {236, 316}, {244, 4}, {476, 316}, {4, 324}, {476, 636}}))
      << "a camera that is off keeps its place";
  EXPECT_EQ(0, bob->disableVideo(false));

  ASSERT_EQ(0, subscribe({room->getLiveStreams().front()}));
  EXPECT_EQ("10 10 10 ", levels());
  LMRTCMixConfig custom;
  custom.layoutMode = LMRTCMixLayoutModeCustom;
  custom.customMode = true;
  custom.customLayouts = {{stream("bob", 1), 0, 0, 240, 240}, {stream("carl", 1), 120, 200, 400, 200}};
  custom.customMixAudios = {{stream("bob")}, {stream("bob")}, {microphone()}};
  ASSERT_TRUE(custom.mediaConfig.videoConfig.setBackgroundColor(0xFFFF00));
  ASSERT_EQ(0, configure(custom));
  EXPECT_EQ("480x640 222333y",
            shown({{4, 4}, {236, 4}, {4, 190}, {124, 202}, {124, 396}, {476, 202}, {476, 190}}))
      << "both fill their places, carl on top";
  EXPECT_EQ("10 0 10 ", levels()) << "the chosen ones, once each";
  LMRTCMixConfig whole;
  whole.mediaConfig.videoConfig.videoExtend.renderMode = LMRTCVideoRenderModeWhole;
  ASSERT_EQ(0, configure(whole));
  EXPECT_EQ("480x640 y2y3y", shown({{4, 4}, {34, 4}, {476, 396}, {250, 202}, {224, 202}}));
  watchMix(true);
  EXPECT_EQ("180x320 2y3", shown({{2, 2}, {2, 150}, {82, 102}})) << "places go by the normal size";
  EXPECT_EQ(10u, framesInASecond());

  grid.mediaConfig.videoConfig.videoLayout.width = -2;
  EXPECT_EQ(LocalCodeMixSize, configure(grid));
  whole.mediaConfig.videoConfig.tinyVideoLayout.fps = 61;
  EXPECT_EQ(LocalCodeMixFrameRate, configure(whole));
  custom.customMixAudios->front() = {nullptr};
  EXPECT_EQ(LocalCodeUnknownStream, configure(custom));
  custom.customLayouts->front().width = -4;
  EXPECT_EQ(LocalCodeMixPlacement, configure(custom));
  EXPECT_EQ("180x320 2y3", shown({{2, 2}, {2, 150}, {82, 102}})) << "refusals change nothing";
}

TEST_F(LiveTest, TheMixedStreamsAndTheInnerCdnComeAndGoWithTheBroadcast) {
  const auto anna = add("anna", {.role = LumoRTCLocal::Role::broadcaster, .sourceNumber = 1});
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(LocalCodeNotBroadcasting, anna->enableInnerCdn(true));
  EXPECT_EQ(0, anna->publishVideo());
  EXPECT_EQ(0, anna->publishAudio());
  EXPECT_EQ(0, anna->enableInnerCdn(true));
  local->advance(0us);
  EXPECT_EQ((Trace{"published video anna of 1", "live audio video r", "published audio anna of 2", "cdn"}),
            takeTrace());
  const auto cdn = room->getCDNStream();
  cdn->setVideoView(view);
  ASSERT_EQ(0, subscribe({cdn}));
  EXPECT_EQ("360x640 1", shown({{20, 4}}));
  EXPECT_EQ("0 10 0 ", levels());
  EXPECT_EQ(LocalCodeCdnFormat, ask(&LMRTCCDNInputStream::setVideoConfig, cdn, 17, 1));
  EXPECT_EQ(0, ask(&LMRTCCDNInputStream::setVideoConfig, cdn, 11, 3));
  EXPECT_EQ("480x640 1", shown({{20, 4}}));
  EXPECT_EQ(30u, framesInASecond());
  cdn->setIsMute(true);
  EXPECT_EQ(0u, framesInASecond());
  EXPECT_EQ("0 0 0 ", levels());
  takeTrace();

  EXPECT_EQ(0, anna->leave());
  local->advance(0us);
  EXPECT_EQ(
      (Trace{"unpublished video audio anna of 0", "live ended audio video r", "cdn ended", "left anna"}),
      takeTrace());
  EXPECT_TRUE(room->getLiveStreams().empty() && !room->getCDNStream());
  EXPECT_EQ(LocalCodeStreamGone, subscribe({cdn}));
}

TEST_F(LiveTest, TheInnerCdnIsNotShownAfterUnInit) {
  const auto anna = broadcaster("anna", 1);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(0, anna->enableInnerCdn(true));
  local->advance(0us);
  room->getCDNStream()->setVideoView(view);
  ASSERT_EQ(0, subscribe({room->getCDNStream()}));
  std::uint64_t before = 0;
  local->setSpeaker([&](const AudioBlock&, Microseconds time) {
    if (time != 1s) return;  // when a picture is on its way to the view
    before = view->frameCount();
    engine->unInit();
  });
  local->advance(2s);
  EXPECT_EQ(std::pair(std::uint64_t{15}, before), std::pair(before, view->frameCount()));
}

TEST_F(LiveTest, TheMixIsPushedToAFile) {
  const test::TempFolder folder;
  const auto anna = broadcaster("anna", 1);
  Trace failures;
  local->setPushFailed([&](const std::string& address, const std::string&) { failures.push_back(address); });
  joinAndPublish();
  const std::string address = "file://" + folder.path("a.flv");
  const std::string nowhere = "file://" + folder.path("none/c.mp4");
  EXPECT_EQ(0, push(address));
  EXPECT_EQ(LocalCodePushFailed, push(nowhere));
  EXPECT_EQ(LocalCodePushAddressTaken, push(address));
  EXPECT_EQ(LocalCodePushProtocolUnknown, push("http://host/live"));
  EXPECT_EQ(LocalCodePushContainerUnknown, push("file:///tmp/a.txt"));
  for (const char* const malformed : {"host/live", "rtmp://host", "rtmp://host:99999/live",
                                      "rtmp://ho st/live", "udp://127.0.0.1", "file://a.mp4"})
    EXPECT_EQ(LocalCodePushAddressMalformed, push(malformed)) << malformed;
  local->advance(2s);
  for (const std::int64_t code : {std::int64_t{0}, std::int64_t{LocalCodePushAddressUnknown}})
    EXPECT_EQ(code, answerOf([&](auto done) { info->removePublishStreamUrl(address, done); }));
  EXPECT_EQ(Trace{nowhere}, failures);

  const auto reader = MediaFileReader::open(folder.path("a.flv"), MediaKind::both).reader;
  ASSERT_TRUE(reader);
  int pictures = 0;
  for (; const auto read = reader->nextPicture(); ++pictures)
    EXPECT_EQ("360x640 1", seen(*read->picture, {{20, 4}}));
  EXPECT_NEAR(30, pictures, 1);
  std::vector<std::int16_t> sound;
  while (const auto read = reader->nextSound())
    sound.insert(sound.end(), read->samples.begin(), read->samples.end());
  ASSERT_NEAR(96000, static_cast<double>(sound.size()) / 2, 4096);
  EXPECT_EQ("10 10 0 ", levelsOf(std::span(sound).subspan(19200, 48000)));
}

TEST_F(LiveTest, RoleSwitchesSucceedFailOrEndOutsideTheRoom) {
  const auto anna = broadcaster("anna", 1);
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  LMRTCMixConfig config;
  config.layoutMode = LMRTCMixLayoutModeAdaptive;
  EXPECT_EQ("succeeded", becomeBroadcaster(&config));
  EXPECT_EQ(std::to_string(LocalCodeSameRole), becomeBroadcaster(nullptr));
  ASSERT_EQ(0, ask(&LocalUser::publishDefaultLiveStreams, user()));
  EXPECT_EQ(0, ask(&LMRTCLiveInfo::enableInnerCDN, info, true));
  watchMix(false);
  EXPECT_EQ("360x640 110", shown({{4, 4}, {356, 316}, {4, 324}})) << "the grid that came with the switch";
  takeTrace();
  EXPECT_EQ(0, anna->switchRole(LumoRTCLocal::Role::audience));
  local->advance(0us);
  EXPECT_EQ((Trace{"unpublished audio video anna of 0", "role 1 anna of 0"}), takeTrace());
  bool isAudience = false;
  user()->switchToAudienceOnSucceed([&] { isAudience = true; }, nullptr, nullptr);
  local->advance(0us);
  EXPECT_TRUE(isAudience && user()->streams().empty() && room->getLiveStreams().empty());
  EXPECT_EQ(LocalCodeNotABroadcaster, configure(config)) << "an old handle is of no use";

  takeTrace();
  ASSERT_EQ(0, local->failNext("switchToBroadcaster", LocalCodeKicked));
  EXPECT_EQ("kicked", becomeBroadcaster(nullptr));
  EXPECT_TRUE(!room->localUser() && takeTrace().empty()) << "told by the switch alone";
  EXPECT_EQ(0, join("s", liveConfig(LMRTCRoleTypeBroadcaster))) << "out of the room";
}

}  // namespace
