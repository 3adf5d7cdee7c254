#pragma once

#include <string>

namespace vendelo_sdl2 {

class TApplication;

// A pluggable unit of the application, such as its window.
//
// Called by the main thread, apart from Load, which the GUI module runs on the draw thread. Init hands the module
// to the application, which owns it from then on and deletes it in DestroyModules; Destroy does so earlier.
// Operations that a module does not support answer -1.
class TAppModule {
 public:
  TAppModule() = default;
  TAppModule(const TAppModule&) = delete;
  TAppModule& operator=(const TAppModule&) = delete;
  virtual ~TAppModule();

  // Asked on every pass of the shutdown until true; Close follows in the same pass.
  virtual bool ReadyToExit() const;
  virtual int Load(void* Data) = 0;
  virtual int Unload();
  virtual int Poll();
  virtual int Open();
  virtual int Close();
  // Announces the shutdown, once.
  virtual void RequestClose();
  virtual int Write(const unsigned char* Data, int Length);
  virtual int Read(unsigned char* Data, int Length);
  // Request 1 is an event for a listener: Argument is the address of the SDL_Event, the result 1 consumes it.
  virtual int Ioctl(unsigned int Request, unsigned long Argument);
  virtual void Enable();
  virtual void OnEnable();
  virtual void Disable();
  virtual void OnDisable();
  virtual std::string GetVersion();
  // Unloads the module, takes it out of its application and deletes it. -1 before Init, else 0.
  virtual int Destroy();

  // Adds the module to the application and enables it; a refusal by the application (a name that is taken) is not
  // told. Loads only with LoadData, and then returns what Load does. -1 without an application or a name.
  int Init(TApplication* pApplication, std::string ModuleName, void* LoadData, int Priority);

  bool IsEnabled() const { return Enabled != 0; }
  const std::string& GetModuleName() const { return ModuleName; }

 protected:
  std::string ModuleName;
  TApplication* pApplication = nullptr;  // not owned; outlives the module
  int Enabled = 0;
};

}  // namespace vendelo_sdl2
