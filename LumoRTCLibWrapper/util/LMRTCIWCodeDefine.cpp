#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"

#include <array>
#include <cstddef>

namespace {

constexpr std::int64_t kLowestCode = -22;
constexpr char kUnknown[] = "--";

/// Texts by code + 22.
constexpr std::array<const char*, 23> kMessages = {
    "Set or remove WaterMark error",         // -22
    kUnknown,                                // -21
    "Open file Error",                       // -20
    "Interface not support yet",             // -19
    "Create custom stream Error",            // -18
    "Parameter Error",                       // -17
    "Stream Not Exist",                      // -16
    "Start Audio Mix Error",                 // -15
    "Remote User Not Joined RTCRoom",        // -14
    "Local User Not Joined RTCRoom",         // -13
    "Switch camera error",                   // -12
    "RTC Engine not init",                   // -11
    "LMRTCWrapper Engine has been destroy",  // -10
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,   // -9 to -1
    "Success",  // 0
};

}  // namespace

std::string LMRTCIWCodeDefine::codeMessage(std::int64_t code) {
  if (code < kLowestCode || code > 0) return kUnknown;
  return kMessages[static_cast<std::size_t>(code - kLowestCode)];
}
