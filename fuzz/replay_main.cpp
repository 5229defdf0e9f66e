// Runs a fuzz target over every input in the directory it is given, so
// that the ordinary test run replays the seed corpus with any compiler.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/kernels.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size);

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  if (!vesk::ForceFormFromEnvironment())
    return 77;  // skipped: that form cannot run
  std::vector<std::filesystem::path> files(
      std::filesystem::directory_iterator(argv[1]), {});
  std::sort(files.begin(), files.end());  // the same order on every run
  for (const std::filesystem::path& file : files) {
    std::fprintf(stderr, "replaying %s\n", file.c_str());
    std::ifstream in(file, std::ios::binary);
    // A string: a readable NUL follows even an empty input.
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    LLVMFuzzerTestOneInput(
        reinterpret_cast<const unsigned char*>(bytes.c_str()), bytes.size());
  }
  std::printf("replayed %zu inputs with the %s kernels\n", files.size(),
              vesk::FormName(vesk::g_form));
  return files.empty() ? 1 : 0;
}
