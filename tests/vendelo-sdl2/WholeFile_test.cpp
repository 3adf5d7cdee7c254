#include "vendelo-sdl2/WholeFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/ScratchFolder.h"

using vendelo_sdl2::WriteWholeFile;

namespace fs = std::filesystem;

namespace {

class WholeFile : public testing::Test {
 protected:
  static std::string contentOf(const std::string& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  long files() const { return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()); }

  const ScratchFolder folder{"wholefile"};
  const std::string path = folder + "file";
};

TEST_F(WholeFile, IsWrittenWithItsModeWhateverTheMask) {
  const mode_t mask = umask(077);
  EXPECT_EQ(WriteWholeFile(path, "some\ntext", 0644), "");
  umask(mask);
  EXPECT_EQ(contentOf(path), "some\ntext");
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0644));
  EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, TakesThePlaceOfALongerOne) {
  ASSERT_EQ(WriteWholeFile(path, "a text that is longer", 0600), "");
  EXPECT_EQ(WriteWholeFile(path, "", 0600), "");
  EXPECT_EQ(contentOf(path), "");
}

// As a process leaves behind that is killed while it writes.
TEST_F(WholeFile, PartOfAnEarlierOneIsNotInTheWay) {
  std::ofstream(path + ".part") << "a text that is longer";
  EXPECT_EQ(WriteWholeFile(path, "text", 0600), "");
  EXPECT_EQ(contentOf(path), "text");
  EXPECT_EQ(files(), 1);
}

// A reader that has the file open goes on reading what it opened.
TEST_F(WholeFile, OneThatIsBeingReadStaysAsItWas) {
  ASSERT_EQ(WriteWholeFile(path, "first", 0600), "");
  std::ifstream reader(path);
  ASSERT_EQ(WriteWholeFile(path, "other", 0600), "");
  std::string text;
  reader >> text;
  EXPECT_EQ(text, "first");
}

TEST_F(WholeFile, FolderThatIsNotThereIsTold) {
  EXPECT_EQ(WriteWholeFile(folder + "none/file", "text", 0600),
            folder + "none/file.part: No such file or directory");
}

TEST_F(WholeFile, FolderInItsPlaceIsToldAndNothingIsLeftBeside) {
  fs::create_directories(path + "/full");
  EXPECT_EQ(WriteWholeFile(path, "text", 0600), path + ": Is a directory");
  EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, DiskThatIsFullLeavesTheOldFile) {
  ASSERT_EQ(WriteWholeFile(path, "old", 0600), "");
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{1000, before.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const std::string error = WriteWholeFile(path, std::string(5000, 'x'), 0600);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(error, path + ": File too large");
  EXPECT_EQ(contentOf(path), "old");
  EXPECT_EQ(files(), 1);
}

// Whoever can write into the folder beside it must not choose what is overwritten.
TEST_F(WholeFile, LinkInThePlaceOfThePartIsNotFollowed) {
  ASSERT_EQ(WriteWholeFile(folder + "other", "other's", 0600), "");
  fs::create_symlink(folder + "other", path + ".part");
  EXPECT_EQ(WriteWholeFile(path, "text", 0600), path + ".part: Too many levels of symbolic links");
  EXPECT_EQ(contentOf(folder + "other"), "other's");
}

}  // namespace
