#pragma once

#include <string>

/// The video part of an engine setup.
struct LMRTCIWVideoSetup {
  bool enableTinyStream = true;  ///< whether a small ("tiny") video stream is published beside the normal one

  /// JSON text with "enableTinyStream".
  std::string description() const;
};
