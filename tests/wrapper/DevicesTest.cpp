#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using DevicesTest = EngineTest;

TEST_F(DevicesTest, ControlsReachTheDefaultStreamsUnchecked) {
  expect(0, engine->enableMicrophone(true),
         {"T enableMicrophone enable:1", "-> me_mic.setMicrophoneDisable 0"});
  expect(0, engine->enableSpeaker(false), {"T enableSpeaker enable:0", "-> enableSpeaker 0"});
  expect(0, engine->adjustLocalVolume(300),
         {"T adjustLocalVolume volume:300", "-> me_mic.setRecordingVolume 300"});
  expect(0, engine->adjustRemoteVolume(-1), {"T adjustRemoteVolume volume:-1"});
  expect(0, engine->setCameraFocusPositionInPreview({0.5, 2}),
         {"T setCameraFocusPositionInPreview point:{0.5, 2}",
          "-> me_cam.setCameraFocusPositionInPreview {0.5, 2}"});
  expect(0, engine->setCameraExposurePositionInPreview({1, 0}),
         {"T setCameraExposurePositionInPreview point:{1, 0}",
          "-> me_cam.setCameraExposurePositionInPreview {1, 0}"});
  expect(0, engine->setCameraCaptureOrientation(9),
         {"T setCameraCaptureOrientation orientation:9", "-> me_cam.setVideoOrientation 9"});
  expect(kNotSupported, engine->switchToCamera(1), {"T switchToCamera camera:1"});

  expect(0, engine->muteLocalStream(0, true), {"T muteLocalStream type:0,mute:1", "-> me_mic.setIsMute 1"});
  expect(0, engine->muteLocalStream(1, false), {"T muteLocalStream type:1,mute:0", "-> me_cam.setIsMute 0"});
  expect(0, engine->muteLocalStream(7, true),
         {"T muteLocalStream type:7,mute:1", "-> me_mic.setIsMute 1", "-> me_cam.setIsMute 1"});

  expect(true, engine->isCameraFocusSupported() && engine->isCameraExposurePositionSupported(), {});
  sdk->engine->camera->supported = false;
  expect(false, engine->isCameraFocusSupported() || engine->isCameraExposurePositionSupported(), {});
}

TEST_F(DevicesTest, CameraResultsComeOnTheMainQueueAndReadTheCameraThere) {
  expect(0, engine->enableCamera(true, 0),
         {"T enableCamera enable:1,camera:0", "-> me_cam.setCameraPosition 2", "T enableCamera enable:1",
          "-> me_cam.startCapture"});
  expect(0, engine->enableCamera(false, 1),
         {"T enableCamera enable:0,camera:1", "T enableCamera enable:0", "-> me_cam.stopCapture"});
  expect(0, engine->switchCamera(), {"T switchCamera", "-> me_cam.switchCamera"});
  expect(kBadParameter, engine->enableCamera(true, -1), {"T enableCamera enable:1,camera:-1"});
  sdk->engine->camera->position = 1;
  MainQueue::runPending();
  EXPECT_TRACE("R enableCamera callback:onCameraEnabled, code:0, ", "host onCameraEnabled 1 0 ",
               "R enableCamera callback:onCameraEnabled, code:0, ", "host onCameraEnabled 0 0 ",
               "R switchCamera callback:onCameraSwitched, code:0, ", "host onCameraSwitched 1 0 ");
  for (const auto& [position, camera] : {std::pair{2, 0}, {1, 1}, {0, -1}, {3, -1}}) {
    sdk->engine->camera->position = position;
    EXPECT_EQ(camera, engine->whichCamera()) << position;
  }
}

TEST_F(DevicesTest, MutingOthersSelectsByMediaTypeAndReportsWhenNothingMatched) {
  expect(kNotJoined, engine->muteAllRemoteAudioStreams(true),
         {"T muteAllRemoteAudioStreams mute:1", "E: room is nil"});
  room->users = {user("u1", {audio("u1"), video("u1"), stream("u1", "cam2", 1)})};
  room->live = {stream("mix", "a", 0, 2), stream("mix", "v", 1, 2)};
  join();
  expect(kNobody, engine->muteRemoteStream("u9", 2, true),
         {"T muteRemoteStream userId:u9,type:2,mute:1", "T getRemoteUser userId:u9",
          "E muteRemoteStream msg:user is nil"});
  expect(0, engine->muteRemoteStream("u1", 2, true),
         {"T muteRemoteStream userId:u1,type:2,mute:1", "T getRemoteUser userId:u1",
          "-> u1_LumoCloudRTC.setIsMute 1", "-> u1_LumoCloudRTC.setIsMute 1"});
  expect(0, engine->muteLiveMixStream(1, false),
         {"T muteLiveMixStream type:1,mute:0", "-> mix_v.setIsMute 0"});
  expect(0, engine->muteLiveMixStream(2, true),
         {"T muteLiveMixStream type:2,mute:1", "-> mix_a.setIsMute 1", "-> mix_v.setIsMute 1"});
  expect(kNoStream, engine->muteLiveMixStream(4, true), {"T muteLiveMixStream type:4,mute:1"});
  expect(0, engine->muteAllRemoteAudioStreams(true),
         {"T muteAllRemoteAudioStreams mute:1", "-> r1.muteAllRemoteAudio 1"});
}

}  // namespace
}  // namespace lumo
