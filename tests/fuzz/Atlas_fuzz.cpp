// The description of an animation's atlas, with a picture beside it, and the frames that are cut from it.
#include "components/TSpriteAnimation.h"
#include "tests/fuzz/Target.h"
#include "tests/fuzz/Workshop.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::Workshop& workshop = *new fuzz::Workshop("atlas");
  workshop.write("atlas.xml", fuzz::textOf(data, size));
  TSpriteAnimation animation(workshop.renderer(), 4, 4, 40, 30, workshop.folder() + "atlas", TSpriteAnimation::LOOP,
                             "animation");
  const int frames = animation.GetNumFrames();
  for (int frame = -1; frame <= frames && frame < 6; ++frame) {
    if (SDL_Texture* texture = animation.GetFrame(frame)) SDL_DestroyTexture(texture);
    animation.SetFrame(frame, false);
    animation.drawFrame(frame, SDL_Rect{1, 2, 30, 20});
    animation.draw();
  }
  TSpriteAnimation copy(workshop.renderer(), 0, 0, 10, 10, "", TSpriteAnimation::ONCE, "copy");
  copy.CopyData(&animation);
  copy.ReverseOrder();
  copy.draw();
  return 0;
}
