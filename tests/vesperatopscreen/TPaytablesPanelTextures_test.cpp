// The textures of the paytable: what is loaded again or let go is given back to the renderer.
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
