#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace lumo {

/// Writes one flat JSON object as pretty-printed UTF-8 text, one "key" : value line per member, in the order
/// of the calls.
class JsonObject {
 public:
  /// A number, or true or false.
  template <std::integral T>
  JsonObject& add(std::string_view key, T value) {
    if constexpr (std::same_as<T, bool>) {
      return addRaw(key, value ? "true" : "false");
    } else {
      return addRaw(key, std::to_string(value));
    }
  }
  /// Text is escaped; bytes that are not valid UTF-8 become U+FFFD.
  JsonObject& add(std::string_view key, std::string_view text);
  JsonObject& add(std::string_view key, const char* text) { return add(key, std::string_view(text)); }
  JsonObject& add(std::string_view key, const std::string& text) { return add(key, std::string_view(text)); }

  /// The finished object, such as "{\n  \"role\" : 0\n}"; "{\n}" when nothing was added.
  std::string text() const { return "{" + members_ + "\n}"; }

 private:
  JsonObject& addRaw(std::string_view key, std::string_view value);

  std::string members_;
};

}  // namespace lumo
