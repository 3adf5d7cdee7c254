// The inputs of tests/data/fuzz/<target>, each given to its target as script/fuzz does: an input that once did harm
// does none any more, and the targets stay built.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/fuzz/Target.h"
#include "tests/support/TestPaths.h"

namespace {

std::vector<std::filesystem::path> corpus() {
  std::vector<std::filesystem::path> files;
  const std::filesystem::path folder = std::string(testpaths::source) + "/tests/data/fuzz/" FUZZ_TARGET;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

void give(const std::string& input) {
  // In a block of its own, so that the address sanitizer sees a read behind its end.
  const std::vector<uint8_t> bytes(input.begin(), input.end());
  EXPECT_EQ(0, LLVMFuzzerTestOneInput(bytes.data(), bytes.size()));
}

}  // namespace

TEST(Corpus, DoesNoHarm) {
  ASSERT_GE(corpus().size(), 3u);
  for (const std::filesystem::path& file : corpus()) {
    // Before it is read: a crash leaves the name of its input behind.
    std::fprintf(stderr, "%s\n", file.filename().c_str());
    std::ifstream stream(file, std::ios::binary);
    give(std::string(std::istreambuf_iterator<char>(stream), {}));
  }
}

TEST(Corpus, CutAnywhereDoesNoHarm) {
  for (const std::filesystem::path& file : corpus()) {
    std::ifstream stream(file, std::ios::binary);
    const std::string whole(std::istreambuf_iterator<char>(stream), {});
    const size_t step = whole.size() / 16 + 1;
    for (size_t length = 0; length < whole.size(); length += step) give(whole.substr(0, length));
  }
}
