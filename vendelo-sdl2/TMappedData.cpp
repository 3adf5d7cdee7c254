#include "vendelo-sdl2/TMappedData.h"

namespace vendelo_sdl2 {

template class TMappedData<SDL_Texture*>;
template class TMappedData<SDL_Surface*>;

}  // namespace vendelo_sdl2
