// Runs a fuzz target once over every file of the folders and files named on the command line, so
// that builds without libFuzzer compile the target and replay its corpus.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize);

namespace {

void Replay(const std::filesystem::path& AFile) {
  std::ifstream In(AFile, std::ios::binary);
  std::vector<uint8_t> Bytes((std::istreambuf_iterator<char>(In)),
                             std::istreambuf_iterator<char>());
  // An exception that leaves the target terminates the program: that is the failure we want.
  LLVMFuzzerTestOneInput(Bytes.data(), Bytes.size());
}

} // namespace

int main(int argc, char** argv) {
  std::size_t Count = 0;
  for (int I = 1; I < argc; ++I) {
    const std::filesystem::path Path(argv[I]);
    if (std::filesystem::is_directory(Path)) {
      for (const auto& Entry : std::filesystem::recursive_directory_iterator(Path))
        if (Entry.is_regular_file()) {
          Replay(Entry.path());
          ++Count;
        }
    } else {
      Replay(Path);
      ++Count;
    }
  }
  std::printf("replayed %zu inputs\n", Count);
  // A replay of nothing is a broken set-up, not a pass.
  return Count == 0 ? 1 : 0;
}
