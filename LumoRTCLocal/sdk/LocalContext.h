#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/util/LMIWCallbackGate.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"
#include "LumoRTCLocal/sdk/Operations.h"
#include "LumoRTCLocal/sdk/Speaker.h"
#include "LumoRTCLocal/server/AudioExchange.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "LumoRTCLocal/server/MediaServer.h"
#include "LumoRTCLocal/server/Network.h"

namespace lumo {

/// What the objects of one SDK share. All of it is set when it is made and may be used on any thread.
struct LocalContext {
  std::string userId;  ///< of the local user
  std::string networkType;
  std::string ipAddress;
  std::shared_ptr<Timeline> timeline;
  std::shared_ptr<Runner> sdk;  ///< the SDK's thread: completions and events
  std::shared_ptr<Operations> operations;
  std::shared_ptr<CallbackGate> renderGate;  ///< passed by every frame to a surface; open while initialised
  std::shared_ptr<MediaServer> server;
  std::shared_ptr<NetworkConnection> connection;  ///< of the local user
  std::shared_ptr<AudioExchange> audio;
  std::shared_ptr<Speaker> speaker;
  std::shared_ptr<Runner> decoding;  ///< decodes the sound of files
  std::shared_ptr<Runner> opening;   ///< opens files that are published
  std::shared_ptr<FilePlayback> files;
};

/// What an operation of the SDK works with when it runs. It waits with a weak pointer: what waits belongs to
/// the SDK's runner, and so must not hold that.
/// @param code  0, or why the operation is refused; LocalCodeNotInitialised when the context has gone
/// @return null unless `code` is 0
inline std::shared_ptr<const LocalContext> contextFor(const std::weak_ptr<const LocalContext>& weak,
                                                      std::int64_t& code) {
  if (code != LocalCodeSuccess) return nullptr;
  auto context = weak.lock();
  if (!context) code = LocalCodeNotInitialised;
  return context;
}

}  // namespace lumo
