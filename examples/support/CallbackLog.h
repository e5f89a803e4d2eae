#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

struct LMRTCIWEngineDelegate;

/// Prints what happens in the call, one line each: seconds since the start, what happened, and its values by
/// name. Any thread.
class CallbackLog {
 public:
  /// Prints what the program itself does, marked apart from callbacks.
  void action(std::string_view text) const;

  /// Prints a callback about what plays, with a bar.
  /// @param total  seconds; 0: unknown
  void progress(std::string_view callback, double seconds, double total) const;

  /// Fills every field, but for the progress of audio mixing, with a callback that prints its line. The log
  /// must outlive the callbacks.
  void fill(LMRTCIWEngineDelegate& delegate) const;

 private:
  void fillRooms(LMRTCIWEngineDelegate& d) const;
  void fillSubRooms(LMRTCIWEngineDelegate& d) const;
  void fillStreams(LMRTCIWEngineDelegate& d) const;
  void fillLive(LMRTCIWEngineDelegate& d) const;
  void fillMedia(LMRTCIWEngineDelegate& d) const;
  /// @param labels  the names of the callback's arguments
  template <class... Arguments>
  void print(std::function<void(Arguments...)>& field, const char* name,
             std::array<const char*, sizeof...(Arguments)> labels) const;
  void line(const char* mark, std::string_view what, std::string_view values) const;

  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};
