#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLocal/LumoRTCLocal.h"

// A host of the installed packages: joins a room in which somebody is already publishing.
int main() {
  const auto local = LumoRTCLocal::install({.pace = LumoRTCLocal::Pace::manual});
  const auto anna = local->join("room", "anna").participant;
  anna->publishVideo();

  std::string heard;
  const auto host = std::make_shared<LMRTCIWEngineDelegate>();
  host->onRoomJoined = [&heard](std::int64_t code, const std::string&) {
    heard += "joined:" + std::to_string(code);
  };
  host->onUserJoined = [&heard](const std::string&, const std::string& userId) {
    heard += " user:" + userId;
  };
  host->onRemotePublished = [&heard](const std::string&, const std::string& userId, std::int64_t mediaType) {
    heard += " published:" + userId + ":" + std::to_string(mediaType);
  };
  const auto engine = LMRTCIWEngine::create();
  engine->setEngineDelegate(host);
  engine->joinRoom("room", std::make_shared<LMRTCIWRoomSetup>());
  local->advance(lumo::Microseconds{100'000});
  engine->destroy();

  std::cout << heard << '\n';
  return heard == "joined:0 user:anna published:anna:1" ? 0 : 1;
}
