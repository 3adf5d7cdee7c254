// The fonts of the paytable's bet labels: one that no label has taken is closed again.
#include <SDL_ttf.h>
#include <dlfcn.h>

#include "tests/vesperatopscreen/PaytablesFixture.h"

using namespace paytabletest;

namespace {
int fontsOpen = 0;
}  // namespace

// In front of SDL_ttf.
extern "C" TTF_Font* TTF_OpenFont(const char* file, int size) {
  static const auto real = reinterpret_cast<decltype(&TTF_OpenFont)>(dlsym(RTLD_NEXT, "TTF_OpenFont"));
  TTF_Font* font = real(file, size);
  if (font) ++fontsOpen;
  return font;
}
extern "C" void TTF_CloseFont(TTF_Font* font) {
  static const auto real = reinterpret_cast<decltype(&TTF_CloseFont)>(dlsym(RTLD_NEXT, "TTF_CloseFont"));
  --fontsOpen;
  real(font);
}

namespace {

class PaytableFonts : public Paytables {
 protected:
  PaytableFonts() : Paytables("paytablefonts", 8) {}
  // How many fonts a game with so many pages of one name keeps open.
  int openedBy(size_t pages, const char* game) {
    const int before = fontsOpen;
    open(setup(std::vector<xmlrpc_c::value>(pages, page("paytable", {Text{}})), 20, 10), game);
    EXPECT_TRUE(screen.find(kPanel + "minBetLabel"));
    return fontsOpen - before;
  }
};

}  // namespace

TEST_F(PaytableFonts, ThatOfASecondPageOfOneNameIsClosedAgain) {
  EXPECT_EQ(1, openedBy(1, "Reels"));
  EXPECT_EQ(0, openedBy(3, "Wheels"));  // the one before goes with its labels
}
