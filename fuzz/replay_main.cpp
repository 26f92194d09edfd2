// Gives every file of the folders on the command line to the fuzz target, and
// the inputs around it: PLACES FOLDER... Corpora and old findings are replayed
// by every build, not only by a fuzzer's.
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

void Run(const std::vector<std::uint8_t>& input) {
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

// The inputs around one: cut at so many places, and changed there, by one byte
// and by four.
void RunAround(const std::vector<std::uint8_t>& input, std::size_t places) {
  constexpr std::uint8_t kBytes[] = {0x00, 0x7F, 0xFF};
  if (places == 0) return;
  for (std::size_t at = 0; at < input.size(); at += 1 + input.size() / places) {
    const auto place = static_cast<std::ptrdiff_t>(at);
    Run({input.begin(), input.begin() + place});
    for (const std::uint8_t byte : kBytes) {
      for (const std::size_t count : {1u, 4u}) {
        std::vector<std::uint8_t> changed = input;
        std::fill_n(changed.begin() + place,
                    std::min(count, changed.size() - at), byte);
        Run(changed);
      }
    }
  }
}

void Replay(const std::filesystem::path& path, std::size_t places) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<std::uint8_t> input{std::istreambuf_iterator<char>(file),
                                        {}};
  // The last one is the culprit.
  std::fprintf(stderr, "%s\n", path.filename().string().c_str());
  Run(input);
  RunAround(input, places);
}

}  // namespace

int main(int count, char** arguments) {
  const std::size_t places = std::stoul(arguments[1]);
  for (int i = 2; i < count; ++i) {
    const std::vector<std::filesystem::path> files = FilesIn(arguments[i]);
    if (files.empty()) {
      std::fprintf(stderr, "%s holds no input\n", arguments[i]);
      return 1;
    }
    for (const auto& file : files) Replay(file, places);
  }
  return 0;
}
