#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

struct LMRTCIWEngineDelegate;

/// Lets a script wait for the callbacks that answer its operations. Any thread.
class Answers {
 public:
  /// Adds to the callbacks that the script waits for, which go on doing what they did. The object must
  /// outlive them.
  void watch(LMRTCIWEngineDelegate& delegate);

  /// Waits up to ten seconds for a callback of that name, one for each call.
  /// @return its code; nothing when it has not come
  std::optional<std::int64_t> next(const std::string& name);

 private:
  /// @tparam Arguments  the last two are code and message
  template <class... Arguments>
  void watch(std::function<void(Arguments...)>& field, const char* name);

  void add(const char* name, std::int64_t code);

  std::mutex mutex_;  // guards the rest
  std::condition_variable come_;
  std::map<std::string, std::deque<std::int64_t>> codes_;
};
