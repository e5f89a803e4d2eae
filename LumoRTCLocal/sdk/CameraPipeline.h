#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "LumoRTCLocal/media/FrameDelivery.h"
#include "LumoRTCLocal/media/FrameGrid.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/FrameWrapper.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/media/VideoFormat.h"
#include "LumoRTCLocal/media/VideoSource.h"
#include "LumoRTCLocal/media/Watermark.h"
#include "LumoRTCLocal/sdk/SendHook.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// One camera and the way of its pictures to the preview and into a publication. It captures on a media
/// runner of its own, at the frame rate of its format, and only while somebody wants the pictures. A picture
/// is captured once and shared; it is mirrored once and scaled down once, where that is asked for. The
/// operations may be called on any thread.
class CameraPipeline : public std::enable_shared_from_this<CameraPipeline> {
 public:
  /// @param name    of the runners
  /// @param source  null: there is nothing to capture
  /// @param renderGate  of the preview, as for FrameDelivery
  CameraPipeline(std::shared_ptr<Timeline> timeline, std::string name, std::shared_ptr<VideoSource> source,
                 const VideoFormat& format, std::shared_ptr<const CallbackGate> renderGate = nullptr);

  /// Captures from `source` from the next picture on; its capture time starts at 0. Null ends the capture.
  void setSource(std::shared_ptr<VideoSource> source);
  void setFormat(const VideoFormat& format);
  VideoFormat format() const;

  /// How the pictures have to be turned to stand upright; they themselves are not turned.
  /// @param degrees  clockwise: 0, 90, 180 or 270
  void setRotation(std::int32_t degrees);
  /// Mirrors what is sent, left to right when it stands upright. A watermark is not mirrored: it can be read
  /// in the preview and by the members.
  void setMirror(bool mirror);
  /// Drawn into every picture from now on; null draws nothing. It must not be given to two pipelines.
  void setWatermark(std::shared_ptr<Watermark> watermark);
  /// Who sees and may replace the pictures before they are mirrored, scaled and sent: also while nobody wants
  /// those of an open publication. Empty: nobody.
  void setSendCallback(SendHook::Callback callback);
  /// Whether a small stream goes out; without one, whoever wants it gets the normal one.
  void setTinyEnabled(bool enabled);
  /// Absent: as defaultTinyFormat.
  void setTinyFormat(std::optional<VideoFormat> format);
  /// Size and frame rate of the small stream.
  VideoFormat tinyFormat() const;

  /// While it is off, nothing is captured at all.
  void setActive(bool active);
  /// Captures also while nobody wants the pictures, so that a source that has an end comes to it.
  void setContinuous(bool continuous);
  /// Whether the camera is switched on, as it is at first.
  void setCapturing(bool capturing);
  /// Shows the pictures, never mirrored; null shows them nowhere.
  void setPreview(const std::shared_ptr<LMRTCVideoRenderer>& renderer);
  /// Where the pictures are sent; null sends them nowhere.
  void setPublication(std::shared_ptr<Publication> publication);

  /// Starts capturing if somebody wants pictures now: to be called when the demand of the publication
  /// changes.
  void update();

 private:
  struct Settings {
    std::shared_ptr<VideoSource> source;
    VideoFormat format;
    std::int32_t rotation = 0;
    bool mirror = false;
    std::shared_ptr<Watermark> watermark;
    bool tinyEnabled = true;
    std::optional<VideoFormat> tinyFormat;
    bool active = false;
    bool continuous = false;
    bool capturing = true;
    std::weak_ptr<LMRTCVideoRenderer> preview;
    std::shared_ptr<Publication> publication;
    Microseconds sourceStart{-1};  ///< when the source captured first; negative: not yet
  };
  struct Step;

  template <class Change>
  void change(Change apply);
  bool isWantedLocked() const;
  bool isSending(const Settings& settings) const;
  void startLocked();
  void schedule(std::uint64_t run, Microseconds time);
  void capture(std::uint64_t run);
  bool beginStep(std::uint64_t run, Step& step);
  void endStep(std::uint64_t run);
  void deliver(const Step& step, std::shared_ptr<const LumoRTCI420Buffer> picture);
  void send(const Step& step, const std::shared_ptr<const LumoRTCI420Buffer>& picture,
            const LMRTCVideoFrame& frame);
  bool isTinyDue(const VideoFormat& tiny, Microseconds time);

  const std::shared_ptr<Timeline> timeline_;
  const std::shared_ptr<const CallbackGate> renderGate_;
  const std::string name_;
  const FrameWrapper wrapper_;
  SendHook sendHook_;

  mutable std::mutex mutex_;  ///< guards what follows, up to the capture's own fields
  Settings settings_;
  bool running_ = false;
  std::uint64_t run_ = 0;  ///< counts the starts; a capture that belongs to an earlier one ends
  FrameGrid grid_;         ///< of the present run
  std::shared_ptr<FrameDelivery> delivery_;

  // Used by the capture alone.
  FramePool pool_;
  std::int64_t lastTiny_ = -1;

  std::unique_ptr<Runner>
      runner_;  // made at the first start; last: goes first, while its tasks can reach the rest
};

/// For a publication of pictures: tells `pipeline`, while it is there, of the demand.
Publication::DemandChanged demandOf(std::weak_ptr<CameraPipeline> pipeline);

}  // namespace lumo
