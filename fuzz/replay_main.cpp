// Runs a fuzz target over input files and directories of them, so that the
// ordinary test run replays the seed corpus with any compiler.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size);

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::vector<fs::directory_entry> files;
  for (int i = 1; i < argc; ++i) {
    const fs::directory_entry arg(argv[i]);
    if (!arg.is_directory()) files.push_back(arg);
    if (arg.is_directory())
      files.insert(files.end(), fs::directory_iterator(arg), {});
  }
  std::sort(files.begin(), files.end());  // the same order on every run
  for (const fs::directory_entry& file : files) {
    std::fprintf(stderr, "replaying %s\n", file.path().c_str());
    std::ifstream in(file.path(), std::ios::binary);
    // A string: a readable NUL follows even an empty input.
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    LLVMFuzzerTestOneInput(
        reinterpret_cast<const unsigned char*>(bytes.c_str()), bytes.size());
  }
  std::printf("replayed %zu inputs\n", files.size());
  return files.empty() ? 1 : 0;
}
