#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "LumoRTCLibWrapper/views/BoundStream.h"
#include "LumoRTCLibWrapper/views/LMRTCIWViewDelegate.h"

namespace lumo {

/// A surface that is itself the video view of its streams. It holds them by `Pointer`: std::weak_ptr or
/// std::shared_ptr. Any thread.
template <template <class> class Pointer>
class FrameSurface : public LMRTCIWViewDelegate, public LMRTCVideoRenderer {
 public:
  /// Each makes this surface the stream's video view.
  void setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>& stream) override {
    outputStream_.bind(stream, renderer());
  }
  void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>& stream) override {
    intputStream_.bind(stream, renderer());
  }
  void setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>& stream) override {
    cdnStream_.bind(stream, renderer());
  }

  /// Each clears the stream's video view and forgets every stream.
  void removeLocalView() override { remove(outputStream_); }
  void removeRemoteView() override { remove(intputStream_); }
  void removeInnerCdnView() override { remove(cdnStream_); }

  /// Forgets the streams; what has been shown or waits stays.
  void destroy() {
    outputStream_.forget();
    intputStream_.forget();
    cdnStream_.forget();
  }

  std::shared_ptr<LMRTCVideoOutputStream> outputStream() const { return outputStream_.get(); }
  std::shared_ptr<LMRTCVideoInputStream> intputStream() const { return intputStream_.get(); }
  std::shared_ptr<LMRTCCDNInputStream> cdnStream() const { return cdnStream_.get(); }

 private:
  /// This object.
  virtual std::shared_ptr<LMRTCVideoRenderer> renderer() = 0;

  template <class Stream>
  void remove(BoundStream<Stream, Pointer>& stream) {
    stream.detach();
    destroy();
  }

  BoundStream<LMRTCVideoOutputStream, Pointer> outputStream_;
  BoundStream<LMRTCVideoInputStream, Pointer> intputStream_;
  BoundStream<LMRTCCDNInputStream, Pointer> cdnStream_;
};

}  // namespace lumo
