// The description of a bitmap font, as XML or as whatever else a packer writes, with a picture beside it.
#include "common/TBitmapFont.h"
#include "tests/fuzz/Target.h"
#include "tests/fuzz/Workshop.h"

using namespace vendelo_sdl2;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::Workshop& workshop = *new fuzz::Workshop("fonts");
  workshop.write("font.fnt", fuzz::textOf(data, size));
  const TBitmapFont* font = TBitmapFont::Open(workshop.renderer(), "font", workshop.folder() + "font.fnt");
  for (const char* text :
       {"", "0", "1,234.50", "A\nAV\n\n", "\xc3\xa4\xe2\x82\xac", "\xff\xc3", "AAAAAAAAAAAAAAAA"})
    for (const TAlignment alignment : {LEFT_UP, CENTER_CENTER, RIGHT_DOWN}) {
      int width = -1, height = -1;
      SDL_Texture* texture = font->RenderText(workshop.renderer(), text, &width, &height, alignment);
      fuzz::require(texture || (width == 0 && height == 0), "what is not drawn has no size");
      if (texture) SDL_DestroyTexture(texture);
    }
  for (const int id : {0, 0x30, 0x41, 0x20AC, -1}) font->FindGlyph(id);
  TBitmapFont::CleanupBitmapFonts();
  return 0;
}
