// Gives every file of the folders on the command line to the fuzz target, once:
// corpora and old findings are replayed by every build, not only by a fuzzer's.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size);

namespace {

std::vector<std::filesystem::path> FilesIn(const char* folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  std::fprintf(
      stderr, "%s\n",
      path.filename().string().c_str());  // the last one is the culprit
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                         bytes.size());
}

}  // namespace

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    const std::vector<std::filesystem::path> files = FilesIn(arguments[i]);
    if (files.empty()) {
      std::fprintf(stderr, "%s holds no input\n", arguments[i]);
      return 1;
    }
    for (const std::filesystem::path& file : files) Replay(file);
  }
  return 0;
}
