// Leak checking of the address-sanitizer build. Mesa's driver is unloaded before the check and would show as an
// unknown module, so it stays mapped; libdbus keeps its process-wide records. Nothing of our own is excused.
#if defined(__SANITIZE_ADDRESS__)
#define TOPSCREEN_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TOPSCREEN_ASAN 1
#endif
#endif

#ifdef TOPSCREEN_ASAN
extern "C" int dlclose(void*) { return 0; }
extern "C" const char* __lsan_default_suppressions() { return "leak:libdbus-1.so\n"; }
#endif
