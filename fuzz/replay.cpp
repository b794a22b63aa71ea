// Feeds a target with files, for machines without libFuzzer.
//
//   fuzz_TARGET FOLDER    every file in it, in the order of their names
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "fuzz/input.h"

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: " << arguments[0] << " FOLDER\n";
    return 2;
  }
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    files.insert(entry.path());
  }
  for (const std::filesystem::path& file : files) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    std::cout << file.filename().string() << std::endl;  // which one it was, if it ends here
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  return files.empty() ? 1 : 0;
}
