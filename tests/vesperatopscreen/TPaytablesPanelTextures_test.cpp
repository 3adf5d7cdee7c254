// The textures of the paytable: what is loaded again or let go is given back to the renderer.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <filesystem>

#include "tests/vesperatopscreen/Holdings.h"
#include "tests/vesperatopscreen/PaytablesFixture.h"

using namespace paytabletest;

namespace {

class PaytableTextures : public Paytables {
 protected:
  PaytableTextures() : Paytables("paytabletextures") {}
  void openReels() { open(setup({page("paytable", {Text{}})}, 20, -1)); }
  void close() {
    turnTo(0);
    screen.skip(600);
    panel()->clearPaytable();
  }
  static long count() { return holdings::texturesAlive; }
};

}  // namespace

TEST_F(PaytableTextures, PagesThatAreLoadedAgainReplaceTheOldOnes) {
  openReels();
  const long before = count();
  for (int i = 0; i < 3; ++i) {
    SDL_Texture* const shown = texture();
    EXPECT_EQ(0, panel()->loadImagesOfGame("Reels", false));
    ASSERT_TRUE(screen.until([&] { return texture() != shown; }));
    EXPECT_EQ(before, count()) << i;
  }
}

TEST_F(PaytableTextures, AClearGivesPagesAndTextsBack) {
  openReels();
  close();
  const long closed = count();  // the fonts stay
  for (int i = 0; i < 3; ++i) {
    openReels();
    EXPECT_LT(closed, count());
    close();
    EXPECT_EQ(closed, count()) << i;
  }
}

// A pipe that nobody writes into holds the decoding up at the last page.
TEST_F(PaytableTextures, PagesBecomeTexturesWhileOthersAreDecodedAndAreSeenTogether) {
  const std::filesystem::path first = "Games/Reels/Icons/paytable/InfoPage_Paytable.png";
  const std::filesystem::path slow = "Games/SlowReels/Icons/paytable/InfoPage_Rules.png";
  std::filesystem::create_directories(slow.parent_path());
  for (const char* page : {"InfoPage_Paytable.png", "InfoPage_Features.png"})
    std::filesystem::copy_file(first, slow.parent_path() / page, std::filesystem::copy_options::overwrite_existing);
  std::filesystem::remove(slow);
  ASSERT_EQ(0, mkfifo(slow.c_str(), 0600));

  enter("SlowReels");
  const long before = count();
  turnTo(1);
  ASSERT_TRUE(screen.until([&] { return count() == before + 2; })) << count() - before;
  EXPECT_EQ(-2, panel()->updatePaytable()) << "nothing is loaded before all of it is";
  EXPECT_EQ(nullptr, texture());
  EXPECT_FALSE(screen.visible("pPaytablesPanel"));

  int pipe = -1;
  ASSERT_TRUE(screen.until([&] { return (pipe = ::open(slow.c_str(), O_WRONLY | O_NONBLOCK)) >= 0; }));
  ::close(pipe);  // a picture without a byte
  ASSERT_TRUE(screen.until([&] { return screen.visible("pPaytablesPanel") && panel()->updatePaytable() == 0; }));
  EXPECT_NE(nullptr, texture());
  std::filesystem::remove(slow);
}
