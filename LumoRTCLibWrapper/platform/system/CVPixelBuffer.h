#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

class CVPixelBuffer;
using CVPixelBufferRef = std::shared_ptr<CVPixelBuffer>;

/// Pixel formats, as four-character codes.
enum CVPixelFormat : std::uint32_t {
  /// One plane, four bytes a pixel: blue, green, red, alpha.
  kCVPixelFormatType_32BGRA = 'B' << 24 | 'G' << 16 | 'R' << 8 | 'A',
  /// Three planes: Y, then U and V of half width and half height, rounded up.
  kCVPixelFormatType_420YpCbCr8Planar = 'y' << 24 | '4' << 16 | '2' << 8 | '0',
};

/// The attribute that makes a buffer shareable with the host's renderer.
inline constexpr char kCVPixelBufferIOSurfacePropertiesKey[] = "IOSurfaceProperties";

/// The system's pixel buffer: a picture in memory that the CPU reaches between lock and unlock.
class CVPixelBuffer {
 public:
  using Properties = std::map<std::string, std::string>;
  using Attributes = std::map<std::string, Properties>;
  /// Makes a BGRA buffer, or null when it cannot. Called on any thread.
  using Factory =
      std::function<CVPixelBufferRef(std::size_t width, std::size_t height, const Attributes& attributes)>;

  virtual ~CVPixelBuffer() = default;

  /// A new 32BGRA buffer of the installed factory; by default plain memory with tight rows, all zero.
  /// @param width,height  pixels; null is returned when either is 0
  static CVPixelBufferRef createBGRA(std::size_t width, std::size_t height, const Attributes& attributes);

  /// A planar buffer over the planes of `picture`, without a copy; shares its ownership. The planes must not
  /// be written. A steady flow of buffers allocates nothing.
  static CVPixelBufferRef wrap(std::shared_ptr<const LumoRTCI420Buffer> picture);

  /// Replaces what `createBGRA` makes, for example by buffers that the GPU shares; empty brings the default
  /// back.
  static void setFactory(Factory factory);

  virtual std::size_t width() const = 0;
  virtual std::size_t height() const = 0;
  /// CVPixelFormat
  virtual std::uint32_t pixelFormat() const = 0;
  virtual const Attributes& attributes() const = 0;

  /// Brackets every access to the addresses below.
  virtual void lockBaseAddress() = 0;
  virtual void unlockBaseAddress() = 0;

  /// First byte of a plane: 0 for BGRA, 0 to 2 (Y, U, V) for planar buffers.
  virtual std::uint8_t* baseAddress(std::size_t plane = 0) = 0;
  /// Bytes from one row of the plane to the next.
  virtual std::size_t bytesPerRow(std::size_t plane = 0) const = 0;
};
