#pragma once

#include <string>

namespace lumo {

/// The path that a file URL means: "file:///music/a%20song.mp3" is "/music/a song.mp3". Anything that is not
/// a file URL of this machine is a path already and comes back as it is.
std::string pathOfUrl(const std::string& urlOrPath);

}  // namespace lumo
