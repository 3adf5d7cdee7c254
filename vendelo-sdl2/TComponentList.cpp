#include "vendelo-sdl2/TComponentList.h"

#include <algorithm>
#include <atomic>
#include <cstdio>

#include "vendelo-sdl2/TGuiComponent.h"

namespace vendelo_sdl2 {
namespace {

// Passes begun so far, over whatever list.
std::atomic<uint64_t> passes{0};

}  // namespace

TComponentList::~TComponentList() {
  clear();
  for (Walk* walk = mpWalks; walk; walk = walk->mpOuter) walk->mpList = nullptr;
}

TGuiComponent* TComponentList::add(TGuiComponent* component, TGuiComponent* parent, const std::string& ownerName) {
  if (!component) return nullptr;
  if (findByName(component->getName()) || contains(component)) {
    std::printf("application::Component \"%s\" already exists in module \"%s\".", component->getName().c_str(),
                ownerName.c_str());
    return nullptr;
  }
  component->setParent(parent);
  component->mPassMark.added = passes;
  for (const Walk* walk = mpWalks; walk; walk = walk->mpOuter)
    if (walk->mServesNewcomer) markServed(component, walk);
  mComponents.push_back(component);
  if (component->load() != 0)
    std::printf("application::load() error for %s while adding on \"%s\".", component->getName().c_str(),
                ownerName.c_str());
  return component;
}

bool TComponentList::remove(TGuiComponent* component, bool deleteInstance, const std::string& ownerName) {
  const iterator found = find(component);
  if (found == mComponents.end()) return false;
  std::printf("application::Dropping component %s from %s", component->getName().c_str(), ownerName.c_str());
  skip(found);
  mComponents.erase(found);
  if (deleteInstance) delete component;
  return true;
}

TGuiComponent* TComponentList::findByName(const std::string& name) const {
  if (name.empty()) return nullptr;
  const auto found = std::find_if(mComponents.begin(), mComponents.end(),
                                  [&name](const TGuiComponent* c) { return c->getName() == name; });
  return found == mComponents.end() ? nullptr : *found;
}

bool TComponentList::contains(const TGuiComponent* component) const {
  return component && std::find(mComponents.begin(), mComponents.end(), component) != mComponents.end();
}

bool TComponentList::bringToFront(TGuiComponent* component) {
  const iterator found = find(component);
  if (found == mComponents.end()) return false;
  skip(found);
  mComponents.splice(mComponents.end(), mComponents, found);
  return true;
}

bool TComponentList::sendToBack(TGuiComponent* component) {
  const iterator found = find(component);
  // "Already there" is false here, unlike in bringToFront.
  if (found == mComponents.end() || found == mComponents.begin()) return false;
  skip(found);
  mComponents.splice(mComponents.begin(), mComponents, found);
  return true;
}

void TComponentList::clear() {
  for (Walk* walk = mpWalks; walk; walk = walk->mpOuter) walk->mNext = mComponents.end();
  while (!mComponents.empty()) {
    TGuiComponent* component = mComponents.front();
    mComponents.pop_front();
    delete component;
  }
}

TComponentList::iterator TComponentList::find(const TGuiComponent* component) {
  return std::find(mComponents.begin(), mComponents.end(), component);
}

// No pass may go on from an element that leaves its place.
void TComponentList::skip(iterator leaving) {
  for (Walk* walk = mpWalks; walk; walk = walk->mpOuter)
    if (walk->mNext == leaving) ++walk->mNext;
}

// The component has had its turn in `by`; what other passes under way know of it stays.
void TComponentList::markServed(TGuiComponent* component, const Walk* by) {
  uint32_t served = 0;
  for (const Walk* walk = mpWalks; walk; walk = walk->mpOuter)
    if (walk == by || walk->hasServed(component)) served |= walk->mBit;
  component->mPassMark.served = served;
  component->mPassMark.pass = mpWalks->mPass;
}

// The bits are enough for any passes of a tree inside each other; deeper ones share the last.
TComponentList::Walk::Walk(TComponentList& list)
  : mpList(&list),
    mNext(list.mComponents.begin()),
    mpOuter(list.mpWalks),
    mPass(++passes),
    mBit(mpOuter ? std::max(mpOuter->mBit, mpOuter->mBit << 1) : 1) {
  list.mpWalks = this;
}

TComponentList::Walk::~Walk() {
  if (mpList) mpList->mpWalks = mpOuter;
}

bool TComponentList::Walk::hasServed(const TGuiComponent* component) const {
  const TPassMark& mark = component->mPassMark;
  return mark.pass >= mPass && (mark.served & mBit) != 0;
}

TGuiComponent* TComponentList::Walk::next() {
  if (!mpList) return nullptr;
  auto& components = mpList->mComponents;
  const auto waits = [this](const TGuiComponent* component) { return !hasServed(component); };
  mNext = std::find_if(mNext, components.end(), waits);
  if (mNext == components.end()) mNext = std::find_if(components.begin(), components.end(), waits);
  if (mNext == components.end()) return nullptr;
  TGuiComponent* const component = *mNext++;
  mServesNewcomer = component->mPassMark.added >= mPass;
  mpList->markServed(component, this);
  return component;
}

}  // namespace vendelo_sdl2
