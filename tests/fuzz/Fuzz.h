#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

/// Runs a fuzz target on one input. Each target is one such function; libFuzzer calls it with inputs that it
/// makes up, the main of ReplayMain.cpp with those of files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace lumo::fuzz {

/// Ends the program unless `holds`; libFuzzer then keeps the input.
inline void check(bool holds, std::string_view property) {
  if (holds) return;
  std::cerr << "Does not hold: " << property << std::endl;
  std::abort();
}

/// Takes values from the front of an input; behind its end there are zeros.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool isEmpty() const { return rest_.empty(); }
  template <class Number>
  Number take() {
    Number number{};
    rest_.remove_prefix(rest_.copy(reinterpret_cast<char*>(&number), sizeof(number)));
    return number;
  }
  /// A number from `least` to `most`, which are less than 65536 apart.
  std::int32_t take(std::int32_t least, std::int32_t most) {
    return least + take<std::uint16_t>() % (most - least + 1);
  }
  /// A text of up to 15 bytes.
  std::string text() {
    std::string text(take<std::uint8_t>() % 16U, 0);
    text.resize(rest_.copy(text.data(), text.size()));
    rest_.remove_prefix(text.size());
    return text;
  }

 private:
  std::string_view rest_;
};

}  // namespace lumo::fuzz
