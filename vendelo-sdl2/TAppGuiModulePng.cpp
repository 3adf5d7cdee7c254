// PNG files with text chunks. The library reports errors by longjmp: between a setjmp and its library calls stands
// no object with a destructor, and what is changed in between is volatile.
#include <png.h>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "vendelo-sdl2/TAppGuiModule.h"

namespace vendelo_sdl2 {
namespace {

constexpr int kBitDepth = 8;
constexpr int kCompressionLevel = 3;

// 24 bits with red in the highest of the three bytes, whatever the surface had.
SDL_Surface* toRgb24(SDL_Surface* image) {
  SDL_PixelFormat* format = SDL_AllocFormat(SDL_MasksToPixelFormatEnum(24, 0xff0000, 0xff00, 0xff, 0));
  if (!format) return nullptr;
  SDL_Surface* converted = SDL_ConvertSurface(image, format, 0);
  SDL_FreeFormat(format);
  return converted;
}

// Everything that one SavePNG holds.
struct Writing {
  SDL_Surface* surface;
  png_bytep* rows;
  png_structp png;
  png_infop info;
  FILE* file;
};

int finish(Writing& w, int result) {
  if (w.file) std::fclose(w.file);
  if (w.png) png_destroy_write_struct(&w.png, w.info ? &w.info : nullptr);
  std::free(w.rows);
  SDL_FreeSurface(w.surface);
  return result;
}

int writeAll(Writing& w, png_textp text, int textCount) {
  if (setjmp(png_jmpbuf(w.png))) return -4;
  png_init_io(w.png, w.file);
  png_set_IHDR(w.png, w.info, static_cast<png_uint_32>(w.surface->w), static_cast<png_uint_32>(w.surface->h),
               kBitDepth, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(w.png, kCompressionLevel);
  if (text) png_set_text(w.png, w.info, text, textCount);
  png_write_info(w.png, w.info);
  png_set_rows(w.png, w.info, w.rows);
  png_write_png(w.png, w.info, PNG_TRANSFORM_BGR, nullptr);
  png_write_end(w.png, w.info);
  return std::fflush(w.file) == 0 ? 0 : -4;
}

int readText(png_structp png, png_infop info, FILE* file, png_textp out, int* count) {
  if (setjmp(png_jmpbuf(png))) return -1;
  png_init_io(png, file);
  png_read_info(png, info);
  png_textp chunks = nullptr;
  int found = 0;
  png_get_text(png, info, &chunks, &found);
  if (found <= 0) return 0;
  if (*count > found) *count = found;
  for (int i = 0; i < *count; ++i) {
    out[i].compression = chunks[i].compression;
    out[i].text_length = chunks[i].text_length;
    std::strcpy(out[i].key, chunks[i].key);
    std::strcpy(out[i].text, chunks[i].text);
  }
  return 0;
}

}  // namespace

int TAppGuiModule::SavePNG(SDL_Surface* pImage, const char* FileName, void* pPngMetadata, int MetadataCount) {
  if (!pImage) return -7;
  if (!FileName) return -6;
  Writing w{toRgb24(pImage), nullptr, nullptr, nullptr, nullptr};
  if (w.surface)
    w.rows = static_cast<png_bytep*>(std::malloc(sizeof(png_bytep) * static_cast<size_t>(w.surface->h)));
  if (!w.rows) {
    std::printf("OUT OF MEMORY!!!!");
    return finish(w, -2);
  }
  for (int y = 0; y < w.surface->h; ++y)
    w.rows[y] = static_cast<png_bytep>(w.surface->pixels) + static_cast<ptrdiff_t>(y) * w.surface->pitch;

  w.png = png_create_write_struct("1.6.34", nullptr, nullptr, nullptr);
  if (w.png) w.info = png_create_info_struct(w.png);
  if (!w.info) return finish(w, -5);
  w.file = std::fopen(FileName, "wb");
  if (!w.file) {
    const int error = errno;
    std::printf("Error opening file: %s.", std::strerror(error));
    errno = error;
    std::perror(FileName);
    return finish(w, -3);
  }
  return finish(w, writeAll(w, static_cast<png_textp>(pPngMetadata), MetadataCount));
}

int TAppGuiModule::GetPNGInfo(std::string Filename, void* pPngMetadata, int* pMetadataCount) {
  if (!pPngMetadata || !pMetadataCount) return -1;
  FILE* file = std::fopen(Filename.c_str(), "rb");
  if (!file) {
    std::printf("Can not load %s", Filename.c_str());
    return -1;
  }
  int result = -1;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (info) result = readText(png, info, file, static_cast<png_textp>(pPngMetadata), pMetadataCount);
  if (png) png_destroy_read_struct(&png, info ? &info : nullptr, nullptr);
  std::fclose(file);
  return result;
}

}  // namespace vendelo_sdl2
