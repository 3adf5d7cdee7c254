// What may happen to the order and to the list while a pass goes over it: each component has its turn once, and the
// pass ends. The same for children and for roots, and for every kind of pass.
#include <gtest/gtest.h>
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TGuiComponent.h"

using namespace vendelo_sdl2;

namespace {

using Names = std::vector<std::string>;

enum Kind { LOGIC, DRAW, MAIN_LOGIC, TEXTURES_LOST };

// Writes down its turn and then does what the test wants of it, in passes of one kind.
class Sibling : public TGuiComponent {
 public:
  Sibling(const std::string& name, Kind kind, Names& served)
    : TGuiComponent(nullptr, 0, 0, 4, 4, name), mKind(kind), mServed(served) {}
  void drawLogic() override { turn(LOGIC); }
  void draw() override { turn(DRAW); }
  void mainLogic() override { turn(MAIN_LOGIC); }
  void OnTexturesLost() override { turn(TEXTURES_LOST); }
  std::function<void()> mOnTurn;

 private:
  void turn(Kind kind) {
    if (kind != mKind) return;
    mServed.push_back(mName);
    // Enough for every test here; a pass that does not end is ended.
    if (mServed.size() > 1000) throw std::string("the pass does not end");
    if (const std::function<void()> now = mOnTurn) now();
  }
  Kind mKind;
  Names& mServed;
};

struct Place {
  const char* name;
  bool roots;
  Kind kind;
};

void PrintTo(const Place& place, std::ostream* out) { *out << place.name; }

// The children of a component, or the roots of the GUI module.
class Passes : public testing::TestWithParam<Place> {
 protected:
  Passes() {
    harness.application().setStatus(TApplication::APP_RUNNING);
    SystemSeams.MicroSleep = [](useconds_t) { return 0; };
    parent = harness.add(new TGuiComponent(nullptr, 0, 0, 4, 4, "parent"));
    for (const char* name : {"a", "b", "c", "d"}) add(name);
  }
  ~Passes() override { SystemSeams = seams; }

  bool roots() const { return GetParam().roots; }
  Sibling* make(const std::string& name) { return new Sibling(name, GetParam().kind, served); }
  Sibling* put(Sibling* sibling) {
    roots() ? harness.module().AddComponent(sibling) : parent->AddComponent(sibling);
    return sibling;
  }
  Sibling* add(const std::string& name) { return put(make(name)); }
  Sibling* get(const std::string& name) {
    return static_cast<Sibling*>(roots() ? harness.module().FindComponentByName(name)
                                         : parent->FindComponentByName(name));
  }
  void front(const std::string& name) {
    EXPECT_TRUE(roots() ? harness.module().BringComponentToFront(get(name))
                        : parent->BringComponentToFront(get(name)));
  }
  void back(const std::string& name) {
    roots() ? harness.module().SendComponentToBack(get(name)) : parent->SendComponentToBack(get(name));
  }
  Sibling* remove(const std::string& name, bool deleteInstance) {
    Sibling* sibling = get(name);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(roots() ? harness.module().RemoveComponent(sibling, deleteInstance)
                        : parent->RemoveComponent(sibling, deleteInstance));
    testing::internal::GetCapturedStdout();
    return sibling;
  }
  void onEach(const std::function<void(const std::string& name)>& turn) {
    for (const char* name : {"a", "b", "c", "d"}) get(name)->mOnTurn = [=] { turn(name); };
  }
  void run() {
    if (GetParam().kind == MAIN_LOGIC)
      roots() ? harness.module().mainLogic() : parent->mainLogic();
    else if (!roots() && GetParam().kind == LOGIC)
      parent->drawLogic();
    else if (!roots() && GetParam().kind == DRAW)
      parent->draw();
    else if (!roots())
      parent->OnTexturesLost();
    else
      frame();
  }
  void frame() {
    if (GetParam().kind == TEXTURES_LOST) harness.module().TexturesLost();
    harness.module().draw();
  }
  Names pass() {
    served.clear();
    run();
    return served;
  }
  // Everybody that the list has, in its order, taken from a pass in which nothing happens.
  Names order() {
    Names now;
    for (const char* name : {"a", "b", "c", "d", "new"})
      if (get(name)) get(name)->mOnTurn = nullptr;
    return pass();
  }

  TSystemSeams seams = SystemSeams;
  WidgetHarness harness{8, 8};
  FakeClock clock{1000};
  TGuiComponent* parent = nullptr;
  Names served;
};

TEST_P(Passes, EachThatComesToTheFrontInItsTurnIsServedOnce) {
  onEach([this](const std::string& name) { front(name); });
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  get("b")->mOnTurn = nullptr;
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  EXPECT_EQ((Names{"b", "a", "c", "d"}), order());
}

TEST_P(Passes, OneThatWasServedAndComesToTheFrontIsNotServedAgain) {
  get("b")->mOnTurn = [this] { front("a"); };
  get("d")->mOnTurn = [this] { front("b"); };
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  EXPECT_EQ((Names{"c", "d", "a", "b"}), order());
}

TEST_P(Passes, OneThatWaitsAndComesToTheFrontIsServedThere) {
  get("a")->mOnTurn = [this] { front("b"); };
  EXPECT_EQ((Names{"a", "c", "d", "b"}), pass());
  EXPECT_EQ((Names{"a", "c", "d", "b"}), order());
}

TEST_P(Passes, OneThatWaitsAndGoesToTheBackIsServedLast) {
  get("a")->mOnTurn = [this] { back("c"); };
  EXPECT_EQ((Names{"a", "b", "d", "c"}), pass());
  EXPECT_EQ((Names{"c", "a", "b", "d"}), order());
}

TEST_P(Passes, TheLastGoingToTheBackIsServedAllTheSame) {
  get("c")->mOnTurn = [this] { back("d"); };
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  EXPECT_EQ((Names{"d", "a", "b", "c"}), order());
}

TEST_P(Passes, TheNextOneMayMoveEitherWay) {
  get("a")->mOnTurn = [this] {
    front("b");
    back("b");
    back("c");
    front("c");
  };
  EXPECT_EQ((Names{"a", "d", "c", "b"}), pass());
  EXPECT_EQ((Names{"b", "a", "d", "c"}), order());
}

TEST_P(Passes, AnyShufflingServesEachOnce) {
  unsigned random = 12345;
  const auto dice = [&random](unsigned sides) {
    random = random * 1103515245u + 12345u;
    return (random >> 16) % sides;
  };
  const char* const names[] = {"a", "b", "c", "d"};
  onEach([&](const std::string&) {
    for (unsigned i = dice(6); i > 0; --i) {
      const char* const name = names[dice(4)];
      dice(2) ? front(name) : back(name);
    }
  });
  for (int i = 0; i < 300; ++i) {
    Names all = pass();
    std::sort(all.begin(), all.end());
    ASSERT_EQ((Names{"a", "b", "c", "d"}), all) << "pass " << i;
  }
}

TEST_P(Passes, OneThatIsRemovedBeforeItsTurnHasNone) {
  get("a")->mOnTurn = [this] { remove("b", true); };
  EXPECT_EQ((Names{"a", "c", "d"}), pass());
  get("a")->mOnTurn = nullptr;
  get("c")->mOnTurn = [this] { remove("d", true); };
  EXPECT_EQ((Names{"a", "c"}), pass());
  EXPECT_EQ((Names{"a", "c"}), order());
}

TEST_P(Passes, OneThatLeavesAndComesBackIsServedOnce) {
  onEach([this](const std::string& name) { put(remove(name, false)); });
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
}

TEST_P(Passes, OneThatIsTakenOutAndPutBackBeforeItsTurnIsServedOnce) {
  get("a")->mOnTurn = [this] { put(remove("b", false)); };
  EXPECT_EQ((Names{"a", "c", "d", "b"}), pass());
  EXPECT_EQ((Names{"a", "c", "d", "b"}), order());
}

TEST_P(Passes, OneThatComesBackInALaterPassIsServedInThatOne) {
  Sibling* b = nullptr;
  get("c")->mOnTurn = [&] { b = remove("b", false); };
  EXPECT_EQ((Names{"a", "b", "c", "d"}), pass());
  get("c")->mOnTurn = [&] { put(b); };
  EXPECT_EQ((Names{"a", "c", "d", "b"}), pass());
}

TEST_P(Passes, OneThatIsAddedIsServedInTheSamePass) {
  for (const char* adder : {"a", "d"}) {
    SCOPED_TRACE(adder);
    get(adder)->mOnTurn = [this] { add("new"); };
    EXPECT_EQ((Names{"a", "b", "c", "d", "new"}), pass());
    EXPECT_EQ((Names{"a", "b", "c", "d", "new"}), order());
    remove("new", true);
  }
}

TEST_P(Passes, NewcomersThatAddNewcomersWaitForTheNextPass) {
  int made = 0;
  std::function<void()> spawn = [&] {
    Sibling* next = make("");
    next->mOnTurn = spawn;
    ++made;
    put(next);
  };
  get("d")->mOnTurn = spawn;
  EXPECT_EQ((Names{"a", "b", "c", "d", ""}), pass());
  EXPECT_EQ(2, made);
  // Both have been there from the beginning now, so what they and d add has its turn once more.
  EXPECT_EQ((Names{"a", "b", "c", "d", "", "", "", "", ""}), pass());
  EXPECT_EQ(8, made);
}

TEST_P(Passes, ANewcomerThatReplacesItselfEndsThePass) {
  std::function<void()> replace;
  const auto fresh = [&] {
    add("new");
    get("new")->mOnTurn = replace;
  };
  replace = [&] {
    remove("new", true);
    fresh();
  };
  get("a")->mOnTurn = [&] {
    if (!get("new")) fresh();
  };
  EXPECT_EQ((Names{"a", "b", "c", "d", "new"}), pass());
  // The one that was there from the beginning, and the one that it has put in its place.
  for (int i = 0; i < 3; ++i) EXPECT_EQ((Names{"a", "b", "c", "d", "new", "new"}), pass());
}

TEST_P(Passes, APassInsideAnotherServesEachOnceForItself) {
  bool inside = false;
  get("b")->mOnTurn = [&] {
    if (inside) return front("a");
    inside = true;
    run();
    inside = false;
    front("c");
  };
  // a, b, and inside b's turn all four, a coming to the front meanwhile; then what the outer pass still has to
  // serve.
  EXPECT_EQ((Names{"a", "b", "a", "b", "c", "d", "d", "c"}), pass());
  EXPECT_EQ((Names{"b", "d", "a", "c"}), order());
}

TEST_P(Passes, TwoPassesInsideAnother) {
  int depth = 0, inner = 0;
  get("a")->mOnTurn = [&] {
    if (depth > 0) return back("d");
    for (++depth; inner < 2; ++inner) run();
    --depth;
  };
  EXPECT_EQ((Names{"a", "a", "b", "c", "d", "d", "a", "b", "c", "b", "c", "d"}), pass());
}

TEST_P(Passes, OneThatComesBackInAPassInsideANewcomersTurnIsServedOnce) {
  bool inside = false;
  get("d")->mOnTurn = [&] {
    if (inside) put(remove("d", false));
  };
  get("a")->mOnTurn = [&] {
    if (inside) return;
    add("new")->mOnTurn = [&] {
      if (inside) return;
      inside = true;
      run();
    };
  };
  EXPECT_EQ((Names{"a", "b", "c", "d", "new", "a", "b", "c", "d", "new"}), pass());
}

TEST_P(Passes, DeepInEachOtherTheyAllEnd) {
  int depth = 0;
  get("a")->mOnTurn = [&] {
    if (++depth < 40) run();
    front("a");
  };
  const Names all = pass();
  EXPECT_EQ(40, depth);
  EXPECT_EQ((Names{"b", "c", "d"}), Names(all.end() - 3, all.end()));
}

INSTANTIATE_TEST_SUITE_P(Everywhere, Passes,
                         testing::Values(Place{"ChildrenLogic", false, LOGIC}, Place{"ChildrenDraw", false, DRAW},
                                         Place{"ChildrenMainLogic", false, MAIN_LOGIC},
                                         Place{"ChildrenTexturesLost", false, TEXTURES_LOST},
                                         Place{"RootsLogic", true, LOGIC}, Place{"RootsDraw", true, DRAW},
                                         Place{"RootsMainLogic", true, MAIN_LOGIC},
                                         Place{"RootsTexturesLost", true, TEXTURES_LOST}),
                         [](const testing::TestParamInfo<Place>& info) { return std::string(info.param.name); });

}  // namespace
