#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using ViewBindingTest = EngineTest;
using NativeViewTest = EngineTest;

const std::shared_ptr<LMRTCIWView> kNoNativeView;

TEST_F(ViewBindingTest, TheLocalViewGetsTheCameraAndIsHeldWeakly) {
  auto local = view("local");
  const std::string set = "T setLocalViewWithViewDelegate view:";
  expect(kBadParameter, engine->setLocalView(kNoNativeView),
         {"T setLocalView view:0", set + "0", "E: view is nil"});
  expect(0, engine->setLocalViewWithViewDelegate(local), {set + "1", "-> local.setLocalView me_cam"});
  expect(0, engine->removeLocalView(), {"T removeLocalView", "-> local.removeLocalView"});
  local = nullptr;
  expect(0, engine->removeLocalView(), {"T removeLocalView"});
}

TEST_F(ViewBindingTest, ARemoteViewGetsTheFirstOrdinaryVideoStreamAndStaysWhenRemoved) {
  const std::string set = "T setRemoteViewWithViewDelegate userId:u1";
  const Input notOfVideoClass = make<fake::OddInput>("odd", "odd", 1);
  const std::vector<std::pair<Inputs, std::string>> rows = {
      {{audio("u1"), stream("u1", "screen", 1), video("u1"), stream("u1", "second", 1, 0)},
       "u1_LumoCloudRTC"},
      {{audio("u1")}, "nil"},
      {{notOfVideoClass, video("u1")}, "u1_LumoCloudRTC"},
  };
  join();
  expect(kNobody, engine->setRemoteView(kNoNativeView, "u1"),
         {"T setRemoteView userId:u1", set, "T getRemoteUser userId:u1",
          "E setRemoteViewWithViewDelegate msg:user is nil"});
  for (const auto& [streams, bound] : rows) {
    room->users = {user("u1", streams)};
    expect(0, engine->setRemoteViewWithViewDelegate(view("v"), "u1"),
           {set, "T getRemoteUser userId:u1", "-> v.setRemoteView " + bound});
  }
  for (int i = 0; i < 2; ++i) {
    expect(0, engine->removeRemoteView("u1"),
           {"T removeRemoteView userId:u1", "E: view is nil", "-> v.removeRemoteView"});
  }
  expect(0, engine->setRemoteViewWithViewDelegate(nullptr, "u1"), {set, "T getRemoteUser userId:u1"});
  expect(kBadParameter, engine->removeRemoteView("u1"), {"T removeRemoteView userId:u1"});
}

TEST_F(ViewBindingTest, TheLiveMixViewNeedsNoRoomAndGetsTheFirstVideoStream) {
  const auto mix = view("mix");
  const std::string set = "T setLiveMixViewWithViewDelegate view:";
  expect(kBadParameter, engine->setLiveMixView(kNoNativeView),
         {"T setLiveMixView view:0", set + "0", "E: view is nil"});
  expect(0, engine->setLiveMixViewWithViewDelegate(mix), {set + "1", "-> mix.setRemoteView nil"});
  room->live = {stream("mix", "audio", 0, 2), stream("mix", "video", 1, 2)};
  join(LMRTCIWRoleLiveAudience);
  expect(0, engine->setLiveMixViewWithViewDelegate(mix), {set + "1", "-> mix.setRemoteView mix_video"});
  expect(0, engine->removeLiveMixView(), {"T removeLiveMixView", "-> mix.removeRemoteView"});
}

TEST_F(ViewBindingTest, NativeViewsGoThroughTheForwardingForms) {
  const auto native = LMRTCIWView::create();
  expect(0, engine->setLocalView(native),
         {"T setLocalView view:1", "T setLocalViewWithViewDelegate view:1", "-> createVideoView 0,0 0x0",
          "-> view.setFillMode 2", "-> me_cam.setVideoView set"});
}

TEST_F(NativeViewTest, BindingEmbedsAVideoViewAndRemovingLetsGoOfEverything) {
  const auto native = LMRTCIWView::create({5, 6, 320, 240});
  native->setFitType(1);
  EXPECT_EQ(LMRTCIWViewTypeNative, native->getViewType());
  const std::string embed = "-> createVideoView 0,0 320x240\n-> view.setFillMode 1";
  const auto remote = make<fake::VideoInput>("u1", kLMRTCDefaultStreamTag, 1);
  native->setRemoteView(remote);
  EXPECT_TRACE(embed, "-> u1_LumoCloudRTC.setVideoView set");
  EXPECT_EQ(remote, native->inputStream());
  ASSERT_EQ(1U, native->subviews().size());
  EXPECT_EQ(native->rtcVideoView(), native->subviews()[0]);
  native->removeRemoteView();
  EXPECT_TRACE("-> u1_LumoCloudRTC.setVideoView nil");
  EXPECT_FALSE(native->inputStream() || native->rtcVideoView() || !native->subviews().empty());

  native->setInnerCdnView(make<fake::CdnInput>("cdn"));
  EXPECT_TRACE(embed, "-> cdn_LumoCloudRTC.setVideoView set");
  native->removeInnerCdnView();
  EXPECT_TRACE("-> cdn_LumoCloudRTC.setVideoView nil");
  EXPECT_FALSE(native->cdnStream() || native->rtcVideoView() || native->isLocal());

  native->setLocalView(sdk->engine->defaultVideoStream());
  EXPECT_TRACE(embed, "-> me_cam.setVideoView set");
  native->removeLocalView();
  EXPECT_TRACE("-> me_cam.setVideoView nil");
  EXPECT_TRUE(native->isLocal());

  native->setRemoteView(remote);
  native->setLocalView(sdk->engine->defaultVideoStream());
  EXPECT_EQ(2U, native->subviews().size());
  trace->take();
  native->destroy();
  EXPECT_TRACE("-> me_cam.setVideoView nil", "-> u1_LumoCloudRTC.setVideoView nil");
  EXPECT_EQ(1U, native->subviews().size());
}

TEST_F(NativeViewTest, FillModeIsAppliedAtEveryBindAndMirrorOnlyWhenSet) {
  const std::vector<std::pair<std::int64_t, std::int64_t>> modes = {{0, 2}, {1, 1}, {2, 0},
                                                                    {3, 0}, {7, 0}, {-1, 0}};
  for (const auto& [fit, mode] : modes) EXPECT_EQ(mode, LMRTCIWView::toLMRTCVideoFillMode(fit)) << fit;

  const auto native = LMRTCIWView::create();
  native->setMirror(true);
  native->setFitType(2);
  EXPECT_TRACE();
  native->setRemoteView(nullptr);
  EXPECT_TRACE("-> createVideoView 0,0 0x0", "-> view.setFillMode 0");
  native->setMirror(false);
  native->setFitType(0);
  EXPECT_TRACE("-> view.setIsPreviewMirror 0", "-> view.setFillMode 2");
}

TEST_F(NativeViewTest, LayoutGivesTheVideoViewThePresentSizeAndKeepsItsOrigin) {
  const auto native = LMRTCIWView::create({0, 0, 10, 10});
  native->layoutIfNeeded();
  native->setRemoteView(nullptr);
  native->rtcVideoView()->setFrame({3, 4, 10, 10});
  native->setFrame({50, 60, 200, 100});
  native->layoutIfNeeded();
  EXPECT_EQ((UIRect{3, 4, 200, 100}), native->rtcVideoView()->frame());
}

}  // namespace
}  // namespace lumo
