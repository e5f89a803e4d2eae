#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"

namespace lumo {

/// Whether a stream belongs to the media type that the host asked for; an unknown number asks for nothing.
inline bool isWanted(const LMRTCStream& stream, std::int64_t mediaType) {
  switch (mediaType) {
    case LMRTCIWMediaTypeAudio:
    case LMRTCIWMediaTypeVideo:
      return stream.mediaType() == mediaType;
    case LMRTCIWMediaTypeAudioVideo:
      return true;
    default:
      return false;
  }
}

/// The user's first stream of that tag and media type that is of the video class; null when there is none.
inline std::shared_ptr<LMRTCVideoInputStream> taggedStream(const LMRTCRemoteUser& user,
                                                           const std::string& tag, std::int64_t mediaType) {
  for (const auto& stream : user.remoteStreams()) {
    if (stream->tag() != tag || stream->mediaType() != mediaType) continue;
    if (auto video = std::dynamic_pointer_cast<LMRTCVideoInputStream>(stream)) return video;
  }
  return nullptr;
}

}  // namespace lumo
