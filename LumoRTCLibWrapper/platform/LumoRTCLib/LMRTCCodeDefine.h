#pragma once

#include <cstdint>
#include <string>

/// The texts of the SDK's own result codes.
class LMRTCCodeDefine {
 public:
  /// The provider's text for `code`; empty when no provider is installed.
  static std::string codeDesc(std::int64_t code);
};
