#pragma once

#include <SDL.h>
#include <list>
#include <string>

#include "common/Algorithms.h"

namespace vendelo_sdl2 {

// A cache of things by name: what was made once is given to everybody who asks for the name again. Nothing is
// counted; the derived class frees everything at once.
// Thread: one at a time, no lock. The cache owns what it holds.
// A thing that could not be made is kept as null and made anew at each request, so each failure adds an element.
template <typename T>
class TMappedData {
 public:
  struct Element {
    std::string Name;
    T Data;
  };
  using List = std::list<Element>;

  TMappedData() = default;
  TMappedData(const TMappedData&) = delete;
  TMappedData& operator=(const TMappedData&) = delete;

  // Makes the thing of that name; null on failure.
  virtual T CreateNew(const std::string& name) = 0;
  virtual ~TMappedData() = default;

  // The cached thing, made first if need be.
  T GetData(const std::string& name) {
    const auto found = find(mMappedData, name);
    if (found != mMappedData.end()) return found->Data;
    return insert(mMappedData, {name, CreateNew(name)})->Data;
  }

  // The last element of that name, unless it holds null; else the list's end.
  static typename List::iterator find(List& list, const std::string& name) {
    const auto found = ::binary_search<Element, std::string>(
      list, name, [](const std::string& wanted, const Element& e) { return e.Name.compare(wanted); });
    return found != list.end() && found->Data ? found : list.end();
  }

  // Keeps the list sorted by name; behind elements of the same name.
  static typename List::iterator insert(List& list, const Element& element) {
    return ::insert_sorted<Element>(list, element,
                                    [](const Element& a, const Element& b) { return a.Name.compare(b.Name) < 0; });
  }

 protected:
  List mMappedData;  // ascending by Name
};

extern template class TMappedData<SDL_Texture*>;
extern template class TMappedData<SDL_Surface*>;

}  // namespace vendelo_sdl2
