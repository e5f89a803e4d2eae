#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/Fuzz.h"

/// Runs the target on every file of the folder.
int main(int, char** argv) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::cout << entry.path().filename() << std::endl;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string input(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    ++files;
  }
  return files == 0;
}
