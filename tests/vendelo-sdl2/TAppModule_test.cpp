#include "vendelo-sdl2/TAppModule.h"

#include <gtest/gtest.h>

#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

class TestModule : public TAppModule {
 public:
  explicit TestModule(Trace* trace = nullptr) : mTrace(trace) {}
  ~TestModule() override { note("deleted " + ModuleName); }
  int Load(void* data) override {
    note("load");
    return *static_cast<int*>(data);
  }
  int Unload() override {
    note("unload " + ModuleName);
    if (throwInUnload) throw 1;
    return unloadResult;
  }
  void OnEnable() override { note("on enable"); }
  void OnDisable() override { note("on disable"); }
  int unloadResult = 0;
  bool throwInUnload = false;

 private:
  void note(const std::string& line) {
    if (mTrace) mTrace->add(line);
  }
  Trace* mTrace;
};

// Only what a module must have.
class BareModule : public TAppModule {
 public:
  int Load(void*) override { return 0; }
};

class Modules : public testing::Test {
 protected:
  TestModule* add(const std::string& name, int priority) {
    auto* module = new TestModule(&trace);
    module->Init(&app, name, nullptr, priority);
    return module;
  }
  Trace trace;
  NoticeCapture notices;
  TestApplication app;
};

TEST_F(Modules, UnsupportedOperationsAnswerTheirDefaults) {
  BareModule module;
  EXPECT_TRUE(module.ReadyToExit());
  EXPECT_EQ(module.Unload(), 0);
  EXPECT_EQ(module.Poll(), -1);
  EXPECT_EQ(module.Open(), -1);
  EXPECT_EQ(module.Close(), -1);
  EXPECT_EQ(module.Write(nullptr, 0), -1);
  EXPECT_EQ(module.Read(nullptr, 0), -1);
  EXPECT_EQ(module.Ioctl(1, 0), -1);
  EXPECT_EQ(module.GetVersion(), "0");
  EXPECT_FALSE(module.IsEnabled());
  EXPECT_EQ(module.GetModuleName(), "");
  EXPECT_EQ(module.Destroy(), -1);
}

TEST_F(Modules, InitRefusesNullAndNamelessAndChangesNothing) {
  TestModule module;
  EXPECT_EQ(module.Init(nullptr, "A", nullptr, 1), -1);
  EXPECT_EQ(module.Init(&app, "", nullptr, 1), -1);
  EXPECT_FALSE(module.IsEnabled());
  EXPECT_EQ(module.GetModuleName(), "");
  EXPECT_TRUE(app.moduleNames().empty());
}

TEST_F(Modules, InitLoadsOnlyWithDataAndAnswersWhatLoadDoes) {
  auto* quiet = add("A", 1);
  EXPECT_TRUE(quiet->IsEnabled());
  EXPECT_FALSE(trace.contains("load"));
  int result = -7;
  auto* loaded = new TestModule(&trace);
  EXPECT_EQ(loaded->Init(&app, "B", &result, 1), -7);
  EXPECT_EQ(trace.count("load"), 1);
  EXPECT_TRUE(notices.trace.contains("Normal|Module A added."));
}

TEST_F(Modules, InitIgnoresThatTheNameIsTaken) {
  add("A", 1);
  TestModule second;
  EXPECT_EQ(second.Init(&app, "A", nullptr, 1), 0);
  EXPECT_EQ(app.moduleNames(), std::vector<std::string>{"A"});
}

TEST_F(Modules, EnableAndDisableReportTheChangeOnce) {
  TestModule module(&trace);
  module.Disable();
  EXPECT_EQ(trace.count("on disable"), 0);
  module.Enable();
  module.Enable();
  EXPECT_EQ(trace.count("on enable"), 1);
  EXPECT_TRUE(module.IsEnabled());
  module.Disable();
  module.Disable();
  EXPECT_EQ(trace.count("on disable"), 1);
  EXPECT_FALSE(module.IsEnabled());
}

TEST_F(Modules, AddingTheSameNameTwiceKeepsOneEntry) {
  add("A", 1);
  TestModule second;
  second.Init(&app, "A", nullptr, 1);
  EXPECT_EQ(app.AddModule(&second, 5), -2);
  EXPECT_TRUE(notices.trace.contains("Warning|Module A already exists in this application."));
  EXPECT_EQ(app.moduleNames().size(), 1u);
  EXPECT_EQ(app.AddModule(nullptr, 1), -1);
}

TEST_F(Modules, PrefixOfAnExistingNameCountsAsADuplicate) {
  add("GUI1", -1);
  TestModule shorter;
  shorter.Init(&app, "GU", nullptr, 1);
  EXPECT_EQ(app.AddModule(&shorter, 1), -2);
  EXPECT_EQ(app.moduleNames(), std::vector<std::string>{"GUI1"});
  auto* longer = add("GUI12", 1);
  EXPECT_EQ(app.GetModuleByName("GUI12"), longer);
}

TEST_F(Modules, LookupPrefersAnExactMatchToAnEarlierLongerName) {
  auto* exact = add("Sound", 1);
  auto* longer = add("Sound2", 9);
  EXPECT_EQ(app.moduleNames(), (std::vector<std::string>{"Sound2", "Sound"}));
  EXPECT_EQ(app.GetModuleByName("Sound"), exact);
  EXPECT_EQ(app.GetModuleByName("Soun"), longer);
  EXPECT_EQ(app.GetModuleByName("S2"), nullptr);
  EXPECT_EQ(app.GetModuleByName("Sound23"), nullptr);
  EXPECT_EQ(app.GetModuleByName(""), nullptr);
}

TEST_F(Modules, PrioritiesDescendAndEqualOnesKeepTheirOrder) {
  add("one", 1);
  add("three", 3);
  add("two", 2);
  add("also two", 2);
  EXPECT_EQ(app.moduleNames(), (std::vector<std::string>{"three", "two", "also two", "one"}));
}

TEST_F(Modules, DestroyModulesGoesFromTheLowestPriorityUp) {
  add("one", 1);
  add("three", 3);
  add("two", 2);
  EXPECT_EQ(app.DestroyModules(), 0);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"unload one", "deleted one", "unload two", "deleted two",
                                                     "unload three", "deleted three"}));
  EXPECT_TRUE(app.moduleNames().empty());
  EXPECT_EQ(app.DestroyModules(), 0);
}

TEST_F(Modules, DestroyModulesReportsResultsAndLeavesWhatThrew) {
  add("fine", 1);
  add("bad", 2)->unloadResult = 5;
  auto* thrower = add("thrower", 3);
  thrower->throwInUnload = true;
  add("last", 4);
  EXPECT_EQ(app.DestroyModules(), 1);
  EXPECT_TRUE(app.log.contains("4|Module fine shut down successfully!"));
  EXPECT_TRUE(app.log.contains("4|Module bad closed with non-0 exit code 5!"));
  EXPECT_TRUE(trace.contains("deleted bad"));
  EXPECT_FALSE(trace.contains("deleted thrower"));
  EXPECT_TRUE(trace.contains("deleted last"));
  EXPECT_TRUE(app.moduleNames().empty());
  delete thrower;
}

TEST_F(Modules, ApplicationReportsHowManyModulesFailed) {
  auto* thrower = add("thrower", 3);
  thrower->throwInUnload = true;
  app.TApplication::Destroy();
  EXPECT_TRUE(notices.trace.contains("Error|Could not destroy 1 modules!"));
  app.TApplication::Destroy();
  EXPECT_TRUE(notices.trace.contains("Info|Successfully destroyed all modules."));
  delete thrower;
}

TEST_F(Modules, DropTakesOutWithoutDeleting) {
  auto* module = add("Sound", 1);
  TestModule stranger;
  EXPECT_EQ(app.DropModule(static_cast<TAppModule*>(nullptr)), -1);
  EXPECT_EQ(app.DropModule(&stranger), -2);
  EXPECT_EQ(app.DropModule(std::string()), -1);
  EXPECT_EQ(app.DropModule(std::string("Soun")), -2);  // exact matches only
  EXPECT_EQ(app.DropModule(std::string("Sound")), 0);
  EXPECT_TRUE(notices.trace.contains("Important|Dropping module Sound"));
  EXPECT_TRUE(app.moduleNames().empty());
  EXPECT_FALSE(trace.contains("deleted Sound"));
  EXPECT_EQ(app.DropModule(module), -2);
  app.AddModule(module, 1);
  EXPECT_EQ(app.DropModule(module), 0);
  delete module;
}

TEST_F(Modules, ModuleDestroysItself) {
  auto* module = add("A", 1);
  EXPECT_EQ(module->Destroy(), 0);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"unload A", "deleted A"}));
  EXPECT_TRUE(app.moduleNames().empty());
}

TEST_F(Modules, FlavourIsKnownByItsExactText) {
  const struct {
    const char* text;
    TFlavour flavour;
  } rows[] = {{"RONDELL", RONDELL_FLAVOUR}, {"TAVE", TAVE_FLAVOUR},        {"TAVE2", TAVE2_FLAVOUR},
              {"PELIX", PELIX_FLAVOUR},     {"UDO", UDO_FLAVOUR},          {"LOMA", LOMA_FLAVOUR},
              {"QUIRA", QUIRA_FLAVOUR},     {"ZOD", ZOD_FLAVOUR},          {"VESPERA", VESPERA_FLAVOUR},
              {"vespera", UNKNOWN_FLAVOUR}, {"VESPERA ", UNKNOWN_FLAVOUR}, {"", UNKNOWN_FLAVOUR}};
  EXPECT_EQ(TerminalFlavour, UNKNOWN_FLAVOUR);
  for (const auto& row : rows) {
    EXPECT_EQ(app.SetTerminalFlavour(row.text), row.flavour) << row.text;
    EXPECT_EQ(TerminalFlavour, row.flavour) << row.text;
  }
}

}  // namespace
