#include "LumoRTCLocal/sdk/LocalProvider.h"

#include <libyuv/convert_argb.h>
#include <libyuv/rotate.h>

#include "LumoRTCLocal/media/AudioFilePlayer.h"
#include "LumoRTCLocal/media/FileUrl.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

std::string LocalProvider::codeDesc(std::int64_t code) { return std::string(localCodeText(code)); }

std::shared_ptr<LMRTCVideoView> LocalProvider::createVideoView(const UIRect& frame) {
  return std::make_shared<LocalVideoView>(frame);
}

double LocalProvider::durationOfAudioFile(const std::string& url) {
  return std::chrono::duration<double>(AudioFilePlayer::durationOf(pathOfUrl(url))).count();
}

void LocalProvider::i420Rotate(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                               std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                               std::uint8_t* dstY, std::int32_t dstStrideY, std::uint8_t* dstU,
                               std::int32_t dstStrideU, std::uint8_t* dstV, std::int32_t dstStrideV,
                               std::int32_t width, std::int32_t height, std::int32_t rotation) {
  const bool turns = rotation == 90 || rotation == 180 || rotation == 270;
  libyuv::I420Rotate(srcY, srcStrideY, srcU, srcStrideU, srcV, srcStrideV, dstY, dstStrideY, dstU, dstStrideU,
                     dstV, dstStrideV, width, height,
                     turns ? static_cast<libyuv::RotationMode>(rotation) : libyuv::kRotate0);
}

void LocalProvider::i420ToARGB(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                               std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                               std::uint8_t* dst, std::int32_t dstStride, std::int32_t width,
                               std::int32_t height) {
  libyuv::I420ToARGB(srcY, srcStrideY, srcU, srcStrideU, srcV, srcStrideV, dst, dstStride, width, height);
}

}  // namespace lumo
