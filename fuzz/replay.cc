// Runs a fuzz target over files: every one of the folders given, in the order of their names, and
// the empty input. Stands for the fuzzer's own main where that is not built.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> FilesOf(const char* folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void Run(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
  // A copy of the exact size: reading beyond it is seen.
  const std::vector<std::uint8_t> input(content.begin(), content.end());
  std::fprintf(stderr, "%s\n", path.c_str());
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerTestOneInput(nullptr, 0);
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& path : FilesOf(argv[i])) {
      Run(path);
      ++count;
    }
  }
  std::printf("%zu inputs and the empty one\n", count);
  return count == 0 ? 1 : 0;
}
