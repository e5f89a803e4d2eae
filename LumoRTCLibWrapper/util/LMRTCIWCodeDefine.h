#pragma once

#include <cstdint>
#include <string>

/// The wrapper's own result codes. Any other value that an operation or a callback carries is a code of the
/// SDK.
enum LMRTCWrapperCode : std::int64_t {
  LMRTCWrapperCodeSuccess = 0,
  LMRTCWrapperCodeEngineDestroyed = -10,          ///< the SDK engine is absent: the engine was destroyed
  LMRTCWrapperCodeEngineNotInit = -11,            ///< for hosts; no operation returns it
  LMRTCWrapperCodeSwitchCameraError = -12,        ///< for hosts; no operation returns it
  LMRTCWrapperCodeLocalUserNotJoined = -13,       ///< the room or its local user is absent
  LMRTCWrapperCodeRemoteUserNotJoined = -14,      ///< the named remote user is not in the room
  LMRTCWrapperCodeStartAudioMixError = -15,       ///< for hosts; no operation returns it
  LMRTCWrapperCodeStreamNotExist = -16,           ///< a stream that the operation needs is absent
  LMRTCWrapperCodeParameterError = -17,           ///< an argument is absent or out of range
  LMRTCWrapperCodeCreateCustomStreamError = -18,  ///< a custom stream could not be made from the file
  LMRTCWrapperCodeInterfaceNotSupport = -19,      ///< the stream or camera does not support the operation
  LMRTCWrapperCodeOpenFileError = -20,            ///< the file of a custom stream could not be read
  LMRTCWrapperCodeWaterMarkError = -22,           ///< the watermark could not be set or removed
};

/// The texts of the wrapper's codes.
class LMRTCIWCodeDefine {
 public:
  /// The text of a code of the wrapper; "--" for any number that is not one.
  static std::string codeMessage(std::int64_t code);
};
