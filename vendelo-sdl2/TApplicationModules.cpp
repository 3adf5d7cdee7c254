// The application's modules and event listeners, and the terminal's flavour.
#include <algorithm>
#include <iterator>

#include "common/Logger.h"
#include "vendelo-sdl2/TAppModule.h"
#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {

TFlavour TerminalFlavour = UNKNOWN_FLAVOUR;

int TApplication::AddModule(TAppModule* pModule, int priority) {
  if (!pModule) return -1;
  const std::string& name = pModule->GetModuleName();
  if (GetModuleByName(name)) {
    KLOG(LogApp, logs::Warning, "Module %s already exists in this application.", name.c_str());
    return -2;
  }
  const auto place = std::find_if(ModuleList.begin(), ModuleList.end(),
                                  [priority](const auto& entry) { return entry.second < priority; });
  ModuleList.insert(place, {pModule, priority});
  KLOG(LogApp, logs::Normal, "Module %s added.", name.c_str());
  return 0;
}

TAppModule* TApplication::GetModuleByName(const std::string& ModuleName) const {
  if (ModuleName.empty()) return nullptr;
  for (const auto& [module, priority] : ModuleList)
    if (module->GetModuleName() == ModuleName) return module;
  for (const auto& [module, priority] : ModuleList)
    if (module->GetModuleName().starts_with(ModuleName)) return module;
  return nullptr;
}

int TApplication::DropModule(TAppModule* pModule) {
  if (!pModule) return -1;
  const auto found = std::find_if(ModuleList.begin(), ModuleList.end(),
                                  [pModule](const auto& entry) { return entry.first == pModule; });
  if (found == ModuleList.end()) return -2;
  KLOG(LogApp, logs::Important, "Dropping module %s", pModule->GetModuleName().c_str());
  ModuleList.erase(found);
  return 0;
}

int TApplication::DropModule(const std::string& ModuleName) {
  if (ModuleName.empty()) return -1;
  for (const auto& [module, priority] : ModuleList)
    if (module->GetModuleName() == ModuleName) return DropModule(module);
  return -2;
}

int TApplication::DestroyModules() {
  int failed = 0;
  while (!ModuleList.empty()) {
    TAppModule* module = ModuleList.back().first;
    ModuleList.pop_back();
    int result = 0;
    try {
      result = module->Unload();
    } catch (...) {
      ++failed;  // what threw here is not safe to delete either
      continue;
    }
    if (result != 0)
      WriteLog(4, 0, "Module %s closed with non-0 exit code %d!", module->GetModuleName().c_str(), result);
    else
      WriteLog(4, 0, "Module %s shut down successfully!", module->GetModuleName().c_str());
    delete module;
  }
  return failed;
}

void TApplication::AddEventListener(TAppModule* pModule, bool InsertFirst) {
  if (!pModule) return;
  RemoveEventListener(pModule);
  EventListenerList.insert(InsertFirst ? EventListenerList.begin() : EventListenerList.end(), pModule);
}

// A listener may remove itself, or another one, while an event is shown to it: the walk goes on behind the removed.
void TApplication::RemoveEventListener(TAppModule* pModule) {
  for (auto listener = EventListenerList.begin(); listener != EventListenerList.end();) {
    if (*listener != pModule) {
      ++listener;
      continue;
    }
    const bool walkedTo = listener == EventListenerListIterator;
    listener = EventListenerList.erase(listener);
    if (walkedTo) EventListenerListIterator = listener;
  }
}

void TApplication::ClearAllEventListeners() {
  EventListenerList.clear();
  EventListenerListIterator = EventListenerList.end();
}

int TApplication::SetTerminalFlavour(std::string terminal_flavour) {
  static constexpr std::array<const char*, 10> kNames = {"",    "RONDELL", "TAVE",  "TAVE2", "PELIX",
                                                         "UDO", "LOMA",    "QUIRA", "ZOD",   "VESPERA"};
  TerminalFlavour = UNKNOWN_FLAVOUR;
  for (int flavour = RONDELL_FLAVOUR; flavour <= VESPERA_FLAVOUR; ++flavour)
    if (terminal_flavour == kNames[flavour]) TerminalFlavour = static_cast<TFlavour>(flavour);
  return TerminalFlavour;
}

}  // namespace vendelo_sdl2
