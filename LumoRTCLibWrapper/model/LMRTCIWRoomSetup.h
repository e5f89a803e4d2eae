#pragma once

#include <cstdint>
#include <string>

/// How a room is joined. The engine and the host share the record.
struct LMRTCIWRoomSetup {
  std::int64_t mediaType = 2;  ///< LMRTCIWMediaType
  std::int64_t role = 0;       ///< LMRTCIWRole
  std::uint64_t joinType = 0;  ///< 1 or, for any other number, 0: how the server admits the local user

  /// JSON text with "mediaType", "role" and "joinType".
  std::string description() const;
};
