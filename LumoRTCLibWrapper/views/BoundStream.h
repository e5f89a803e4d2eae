#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"

namespace lumo {

/// The stream that a surface shows, held by `Pointer`: std::weak_ptr or std::shared_ptr. Any thread.
template <class Stream, template <class> class Pointer>
class BoundStream {
 public:
  std::shared_ptr<Stream> get() const { return std::weak_ptr<Stream>(stream_.get()).lock(); }

  /// Remembers `stream`, which may be null, and makes `view` its video view.
  void bind(const std::shared_ptr<Stream>& stream, const std::shared_ptr<LMRTCVideoRenderer>& view) {
    stream_.set(stream);
    if (stream) stream->setVideoView(view);
  }

  /// Clears the stream's video view.
  void detach() const {
    if (const auto stream = get()) stream->setVideoView(nullptr);
  }

  void forget() { stream_.set({}); }

 private:
  Cell<Pointer<Stream>> stream_;
};

}  // namespace lumo
