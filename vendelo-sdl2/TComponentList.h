#pragma once

#include <cstdint>
#include <list>
#include <string>

namespace vendelo_sdl2 {

class TGuiComponent;

// The components under one owner (a component or the GUI module), rear-most first, with the rules for adding,
// finding, removing and ordering that both owners share.
// Thread: whoever holds the draw mutex. The components in the list are owned by it and deleted with clear() or the
// destructor, in list order. A list may be changed while it is walked, also by the component that is being visited:
// see Walk.
class TComponentList {
 public:
  using const_iterator = std::list<TGuiComponent*>::const_iterator;

  TComponentList() = default;
  ~TComponentList();
  TComponentList(const TComponentList&) = delete;
  TComponentList& operator=(const TComponentList&) = delete;

  const_iterator begin() const { return mComponents.begin(); }
  const_iterator end() const { return mComponents.end(); }
  size_t size() const { return mComponents.size(); }
  bool empty() const { return mComponents.empty(); }
  TGuiComponent* front() const { return mComponents.front(); }
  TGuiComponent* back() const { return mComponents.back(); }

  // Sets the parent, appends and loads. Null, or a name that is taken (printed): null, and the component is neither
  // added nor destroyed. A failing load is printed; the component stays. A component that stood under another
  // parent must have been removed there.
  TGuiComponent* add(TGuiComponent* component, TGuiComponent* parent, const std::string& ownerName);
  // False for null or a stranger. The parent of a component that lives on is not cleared.
  bool remove(TGuiComponent* component, bool deleteInstance, const std::string& ownerName);
  // The first of that name; an empty name finds nothing.
  TGuiComponent* findByName(const std::string& name) const;
  bool contains(const TGuiComponent* component) const;
  // To the end of the list; true also for the one that is last already.
  bool bringToFront(TGuiComponent* component);
  // To the beginning; unlike bringToFront false for the one that is first already.
  bool sendToBack(TGuiComponent* component);
  // Deletes all.
  void clear();

  // One pass over the list, rear to front, without copies and without memory. Each component has its turn once,
  // whatever is reordered meanwhile: one that has had it has none again, also when it leaves the list and comes
  // back, and one that was sent behind the place reached has it last. A component that is removed before its turn
  // has none. One that is added has its turn in the same pass, unless it is added while such a newcomer has its
  // own: that one waits for the next pass, so that every pass ends.
  //   for (TComponentList::Walk walk(list); TGuiComponent* c = walk.next();) ...
  class Walk {
   public:
    explicit Walk(TComponentList& list);
    ~Walk();
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    // Null at the end of the pass, and once the list is gone.
    TGuiComponent* next();

   private:
    friend class TComponentList;
    bool hasServed(const TGuiComponent* component) const;

    TComponentList* mpList;
    std::list<TGuiComponent*>::iterator mNext;
    Walk* mpOuter;  // the passes under way over one list, innermost first
    uint64_t mPass;
    uint32_t mBit;  // its own in TPassMark::served
    bool mServesNewcomer = false;
  };

  // What the passes note on a component. Passes are counted over all lists, so that a note of a former pass, or of
  // another list's, is known by its number.
  struct TPassMark {
    uint64_t pass = 0;    // under way when the component was served last
    uint32_t served = 0;  // which passes under way at that time have served it, a bit each
    uint64_t added = 0;   // begun last when the component was added
  };

 private:
  using iterator = std::list<TGuiComponent*>::iterator;
  iterator find(const TGuiComponent* component);
  void skip(iterator leaving);
  void markServed(TGuiComponent* component, const Walk* by);

  std::list<TGuiComponent*> mComponents;
  Walk* mpWalks = nullptr;
};

}  // namespace vendelo_sdl2
