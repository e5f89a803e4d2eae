#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lumo {

/// An object that can put itself into a log line.
template <class T>
concept Describable = requires(const T& value) {
  { value.description() } -> std::convertible_to<std::string>;
};

/// One value of a log or console line. It refers to what it was made from and renders it only when a line is
/// really written, so passing values costs no allocation. Valid for the full expression that makes it.
class FormatValue {
 public:
  /// An absent value; prints "(null)".
  FormatValue(std::nullopt_t) {}
  /// A number; booleans print as 0 and 1.
  template <std::integral T>
  FormatValue(T value) : kind_(std::is_signed_v<T> ? Kind::kSigned : Kind::kUnsigned) {
    integer_ = static_cast<std::int64_t>(value);
  }
  /// An enumeration; prints as its number.
  template <class T>
  requires std::is_enum_v<T> FormatValue(T value)
      : FormatValue(static_cast<std::underlying_type_t<T>>(value)) {}
  /// A number, printed with the fewest digits that read back as the same value.
  FormatValue(double value) : kind_(Kind::kDouble), double_(value) {}
  FormatValue(const char* text) : FormatValue(std::string_view(text)) {}
  FormatValue(std::string_view text) : kind_(Kind::kText), text_(text) {}
  FormatValue(const std::string& text) : FormatValue(std::string_view(text)) {}
  FormatValue(const std::optional<std::string>& text) {
    if (text) *this = FormatValue(*text);
  }
  /// A list; prints as "(a, b)".
  FormatValue(const std::vector<std::string>& list) : kind_(Kind::kList), object_(&list) {}
  /// Any object with a `description()`.
  template <Describable T>
  FormatValue(const T& value)
      : kind_(Kind::kObject), object_(&value), describe_([](const void* object) {
          return std::string(static_cast<const T*>(object)->description());
        }) {}

  /// Appends the rendered value to `out`.
  void appendTo(std::string& out) const;

 private:
  enum class Kind { kAbsent, kSigned, kUnsigned, kDouble, kText, kList, kObject };

  Kind kind_ = Kind::kAbsent;
  union {
    std::int64_t integer_ = 0;
    double double_;
    std::string_view text_;
    const void* object_;
  };
  std::string (*describe_)(const void*) = nullptr;
};

using FormatValues = std::initializer_list<FormatValue>;

/// Fills `format`: each of the placeholders %@, %zd, %ld and %d takes the next value, whatever its type, and
/// %% prints a percent sign. A placeholder without a value prints "(null)"; surplus values are ignored; any
/// other text, a lone percent sign included, is copied.
std::string format(std::string_view format, FormatValues values);
/// The same, appended to `out`.
void appendFormat(std::string& out, std::string_view format, FormatValues values);

}  // namespace lumo
