#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "LumoRTCLocal/media/NetworkModel.h"
#include "examples/lumo-call/Surface.h"
#include "examples/support/ExitCode.h"

/// The user id of the one who runs the demo.
inline constexpr char kLocalUserId[] = "you";

/// What the command line asks for.
struct CallOptions {
  std::vector<std::string>
      names;  ///< of the scripted participants; each differs from the others and from "you"
  std::string roomId = "demo";
  std::string camera;        ///< a video file or capture device; empty: the test picture
  std::string sheet;         ///< where the contact sheet goes; empty: nowhere
  std::string music;         ///< path or file URL of what is mixed into the call; empty: nothing
  std::string effect;        ///< path or file URL of a sound effect; empty: none
  std::string record;        ///< the folder for speaker.wav and microphone.wav; empty: none
  bool play = false;         ///< on the machine's sound output
  std::string file;          ///< a media file to publish; empty: none
  std::string tag = "file";  ///< under which it is published
  double seconds = 5;        ///< above 0
  SurfaceKind surface = SurfaceKind::native;
  bool log = false;
  bool stats = false;          ///< shows them while the call lasts
  std::string plot;            ///< where they are drawn over time; empty: nowhere
  lumo::NetworkModel network;  ///< of the local user, in both directions
  std::string watermark;       ///< a PNG file that is drawn into the camera's picture; empty: none
  std::string sei;             ///< a text to send with the camera's pictures; empty: none
  bool probe = false;          ///< probes the network before the call
  std::int64_t echo = 0;       ///< seconds that the echo test records before the call; 0: no test
};

/// Reads the command line. Writes the help to standard output, and what is wrong with the options, together
/// with the usage, to standard error.
std::variant<CallOptions, ExitCode> parseOptions(int argc, const char* const* argv);
