#pragma once

#include <random>
#include <string>

// Breaks a good file the way disks, editors and careless tools do: the same seed always breaks it the same way, on
// every machine. One object makes one broken file; one thread.
class Mutator {
 public:
  // What the changes know of the file besides its bytes.
  enum Format {
    BYTES,  // nothing
    PNG,    // sizes in the header; the check sum is put right, so that the damage is met behind it
    JPEG,   // sizes in the frame header
    JSON,   // values, keys, nesting
    XML,    // attributes, elements, entities, nesting
  };

  explicit Mutator(unsigned seed) : mRandom(seed) {}

  // The file with one change, or with up to four.
  std::string broken(const std::string& file, Format format);

 private:
  // Below `bound`, or 0. Not a library distribution: these differ from library to library.
  size_t below(size_t bound) { return bound ? mRandom() % bound : 0; }
  bool changeText(std::string& text, Format format);
  void changeBytes(std::string& text);
  void changeNumber(std::string& text);
  void changeJson(std::string& text);
  void changeXml(std::string& text);
  void changeAttribute(std::string& text);
  void changeElement(std::string& text);
  void changePngHeader(std::string& file);
  void changeJpegHeader(std::string& file);

  std::mt19937 mRandom;
};
