#include "vendelo-sdl2/TAppModule.h"

#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {

TAppModule::~TAppModule() = default;

bool TAppModule::ReadyToExit() const { return true; }

int TAppModule::Unload() { return 0; }

int TAppModule::Poll() { return -1; }

int TAppModule::Open() { return -1; }

int TAppModule::Close() { return -1; }

void TAppModule::RequestClose() {}

int TAppModule::Write(const unsigned char* /*Data*/, int /*Length*/) { return -1; }

int TAppModule::Read(unsigned char* /*Data*/, int /*Length*/) { return -1; }

int TAppModule::Ioctl(unsigned int /*Request*/, unsigned long /*Argument*/) { return -1; }

void TAppModule::Enable() {
  if (Enabled == 0) OnEnable();
  Enabled = 1;
}

void TAppModule::OnEnable() {}

void TAppModule::Disable() {
  if (Enabled != 0) OnDisable();
  Enabled = 0;
}

void TAppModule::OnDisable() {}

std::string TAppModule::GetVersion() { return "0"; }

int TAppModule::Init(TApplication* pApplication, std::string ModuleName, void* LoadData, int Priority) {
  if (!pApplication || ModuleName.empty()) return -1;
  this->pApplication = pApplication;
  this->ModuleName = std::move(ModuleName);
  Enabled = 1;
  pApplication->AddModule(this, Priority);
  return LoadData ? Load(LoadData) : 0;
}

int TAppModule::Destroy() {
  if (!pApplication) return -1;
  Unload();
  pApplication->DropModule(this);
  pApplication->RemoveEventListener(this);
  delete this;
  return 0;
}

}  // namespace vendelo_sdl2
