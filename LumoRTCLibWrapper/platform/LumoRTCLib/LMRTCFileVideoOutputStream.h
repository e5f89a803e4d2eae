#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"

class LMRTCFileVideoOutputStream;

/// Hears of how a file is read, on the SDK's thread.
class LMRTCFileVideoOutputStreamDelegate {
 public:
  using Stream = std::shared_ptr<LMRTCFileVideoOutputStream>;

  virtual ~LMRTCFileVideoOutputStreamDelegate() = default;

  virtual void fileVideoOutputStreamDidStartRead(const Stream& stream) = 0;
  virtual void fileVideoOutputStreamDidReadCompleted(const Stream& stream) = 0;
  virtual void fileVideoOutputStreamDidFailed(const Stream& stream) = 0;
};

/// A media file, sent as pictures and sound.
class LMRTCFileVideoOutputStream : public LMRTCVideoOutputStream {
 public:
  /// Held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCFileVideoOutputStreamDelegate> delegate) = 0;

  /// Ends reading the file. Does nothing when it is not being read.
  virtual void stop() = 0;
};
