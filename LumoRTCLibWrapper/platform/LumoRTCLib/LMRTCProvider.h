#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/platform/system/UIView.h"

class LMRTCAudioMixer;
class LMRTCEngine;
class LMRTCVideoView;

/// What a media SDK supplies. Implement it and install it before the first LMRTCIWEngine is created; the
/// static operations of the SDK's classes reach the installed provider. Operations may be called on any
/// thread.
class LMRTCProvider {
 public:
  virtual ~LMRTCProvider() = default;

  /// Installs the provider of the process; null removes it. An engine that exists keeps the SDK engine it
  /// has.
  static void install(std::shared_ptr<LMRTCProvider> provider);
  /// The installed provider, or null.
  static std::shared_ptr<LMRTCProvider> installed();

  /// The SDK's one engine, which the provider owns.
  virtual std::shared_ptr<LMRTCEngine> sharedEngine() = 0;
  /// The SDK's one audio mixer, which the provider owns.
  virtual std::shared_ptr<LMRTCAudioMixer> sharedAudioMixer() = 0;
  /// What LMRTCAudioMixer::durationOfAudioFile does.
  virtual double durationOfAudioFile(const std::string& url) = 0;
  /// The SDK's text for one of its result codes.
  virtual std::string codeDesc(std::int64_t code) = 0;
  /// A new video view. Main thread only.
  virtual std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect& frame) = 0;

  /// What LumoRTCI420Rotate does.
  virtual void i420Rotate(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                          std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                          std::uint8_t* dstY, std::int32_t dstStrideY, std::uint8_t* dstU,
                          std::int32_t dstStrideU, std::uint8_t* dstV, std::int32_t dstStrideV,
                          std::int32_t width, std::int32_t height, std::int32_t rotation) = 0;
  /// What LumoRTCI420ToARGB does.
  virtual void i420ToARGB(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                          std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                          std::uint8_t* dst, std::int32_t dstStride, std::int32_t width,
                          std::int32_t height) = 0;
};
