// The integrators' page tells how each failure of the service looks. Each row of its table is made to happen here:
// the log gets the line that stands in the row, and the program goes on as it says. A row without a test fails, and
// so does a test without a row.
#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "common/GuardedTransport.h"
#include "tests/common/LinkTestSupport.h"
#include "tests/support/TestPaths.h"
#include "tests/support/TopScreenHarness.h"
#include "tests/vesperatopscreen/TopScreenAppFixture.h"
#include "vesperatopscreen/InitData.h"

using namespace apptest;
using linktest::arrayXml;
using linktest::errorStruct;
using linktest::eventXml;
using linktest::faultXml;
using linktest::memberXml;
using linktest::replyXml;
using linktest::waitFor;

namespace {

// --- the page

std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  for (size_t at = 1; at + 1 < line.size();) {
    const size_t end = line.find(" | ", at) == std::string::npos ? line.rfind(" |") : line.find(" | ", at);
    cells.push_back(line.substr(at + 1, end - at - 1));
    at = end + 2;
    if (end + 2 >= line.size()) break;
  }
  return cells;
}

// What the service does > what the log says.
std::map<std::string, std::string> rowsOfThePage() {
  std::ifstream file(std::string(testpaths::source) + "/docs/INTEGRATION.md");
  std::map<std::string, std::string> rows;
  bool inside = false;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("| The service |", 0) == 0) {
      inside = true;
    } else if (inside && line.rfind("| ", 0) == 0) {
      const std::vector<std::string> cells = cellsOf(line);
      if (cells.size() != 3 || !rows.emplace(cells[0], cells[1]).second)
        ADD_FAILURE() << "not three cells, or a second time: " << line;
    } else if (inside && line.rfind("|--", 0) != 0) {
      break;
    }
  }
  return rows;
}

// The log cell's line, with its words in capitals filled in; empty when it says that there is none.
std::string lineOf(const std::string& cell, const std::map<std::string, std::string>& words) {
  if (cell.rfind("nothing", 0) == 0) return "";
  const size_t start = cell.find('`') + 1;
  std::string line = cell.substr(start, cell.find('`', start) - start);
  for (const auto& [word, text] : words) {
    const size_t at = line.find(word);
    if (at != std::string::npos) line.replace(at, word.size(), text);
  }
  return line;
}

// --- the program

const std::string Nil = replyXml("<nil/>");

std::string initReply(int id) {
  return replyXml("<struct>" + memberXml("ID", "<int>" + std::to_string(id) + "</int>") +
                  memberXml("Locale", "<string>C</string>") + memberXml("DecimalSeparator", "<string>,</string>") +
                  memberXml("ThousandSeparator", "<string>.</string>") +
                  memberXml("ThousandGrouping", "<int>3</int>") + memberXml("Language", "<string>en</string>") +
                  "</struct>");
}

std::string stateReply(const PlatformState& state) {
  const std::string text = linktest::textOf(state.toXml());
  return replyXml(text.substr(text.find("<struct>"), text.rfind("</value>") - text.find("<struct>")));
}

class Link : public TKSLClient {
 public:
  Link(TestApp& app, const xmlrpc_c::clientXmlTransportPtr& transport)
    : TKSLClient("TopScreen", "http://127.0.0.1:1/KSL", 0, transport) {
    SetListener(&app);
    SetPopRequestFrequency(10);  // requests for events go first: leave room for the others
    SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
    mDelay = [](Uint32 milliseconds) {
      pause = milliseconds;
      SDL_Delay(1);
    };
  }
  ~Link() { Stop(); }

  // Of the one link at a time; no member, since the application deletes the client as what it is.
  static inline std::atomic<Uint32> pause{0};
};

struct Row;

// The application on a client whose service does what a row says. The service begins well: a game, a paytable that
// is closed, two levels.
class FailureTable : public TopScreenAppTest, public testing::WithParamInterface<Row> {
 public:
  void brokenConnection();
  void notRegistered();
  void communicationError();
  void otherCode();
  void fault();
  void badState();
  void badEvents();
  void badContext();
  void badGame();
  void badIntegrityText();
  void badBets();
  void badLevels();
  void unknownEvent();
  void allInOneAnswer();
  void lateExtraData();
  void integrityTextGoes();
  void malformedSetup();
  void refusedRegistration();
  void silence();

 protected:
  FailureTable();
  ~FailureTable() override { app.pKSL.reset(); }

  // The line that the row promises.
  std::string line(const std::map<std::string, std::string>& words) const;
  bool until(const std::function<bool()>& condition) {
    return waitFor([&] {
      app.RunOnce();
      return condition();
    });
  }
  void start() {
    client->Start(false, -1);
    ASSERT_TRUE(until([this] { return client->ID() == 42 && state().CurrentBet == 10; }));
    settle();
    app.lines.clear();
  }
  // Further requests for events are answered, and what they brought has been handed out.
  void settle() {
    const size_t before = asked("game.popEvents");
    ASSERT_TRUE(until([&] { return asked("game.popEvents") >= before + 3; }));
  }
  // The log since it was cleared, but for the good line of a registration.
  std::multiset<std::string> lines() const {
    std::multiset<std::string> found;
    for (const TestApp::Line& entry : app.lines)
      if (entry.text != "KSL: Init response OK!") found.insert(entry.text);
    return found;
  }
  size_t asked(const char* method) const { return wire->requests(method).size(); }
  void sendEvents(const std::vector<std::string>& items);
  void expectKept(const linktest::FakeTransport::Answer& answer, const std::string& error);
  void expectKept(const std::string& reply, const std::string& error) {
    SCOPED_TRACE(reply.substr(0, 300));
    expectKept([reply](const std::string&) { return reply; }, error);
  }
  void expectRegisteredAnew(const std::string& reply, const std::string& error);
  void expectLost(int id, const std::string& context, const std::string& logged);

  PlatformState good;
  linktest::FakeTransport* wire;
  xmlrpc_c::clientXmlTransportPtr holder;
  Link* client = nullptr;
  std::atomic<size_t> registrations{0};
};

struct Row {
  const char* name;
  const char* service;  // the row's first cell
  void (FailureTable::*happens)();
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

const Row Rows[] = {
  {"BrokenConnection",
   "is not there, refuses or breaks the connection, answers with an HTTP error, with HTML, with a cut or empty "
   "body, "
   "with text that is no XML, with more than 512 KiB, with values nested too deep, with an `i8` that does not fit "
   "64 "
   "bits",
   &FailureTable::brokenConnection},
  {"NotRegistered", "answers with a struct \"faultCode\" -1, \"faultString\" TEXT", &FailureTable::notRegistered},
  {"CommunicationError", "answers with a \"faultCode\" -501, or with an XML-RPC fault -504 or -505",
   &FailureTable::communicationError},
  {"OtherCode", "answers with another \"faultCode\"", &FailureTable::otherCode},
  {"Fault", "answers with another XML-RPC fault", &FailureTable::fault},
  {"BadState", "answers `platform.state` with a wrong type or without a key", &FailureTable::badState},
  {"BadEvents", "answers `game.popEvents` with a wrong type, or with an event that lacks a key",
   &FailureTable::badEvents},
  {"BadContext", "sends an event with a context of a wrong type", &FailureTable::badContext},
  {"BadGame", "sends event 100 or 101 with a wrong context", &FailureTable::badGame},
  {"BadIntegrityText", "sends event 103 with a wrong context", &FailureTable::badIntegrityText},
  {"BadBets", "sends event 104 with a key that is missing or of a wrong type", &FailureTable::badBets},
  {"BadLevels", "sends event 110 with a level that is broken", &FailureTable::badLevels},
  {"UnknownEvent", "sends an event with an unknown number", &FailureTable::unknownEvent},
  {"AllInOneAnswer", "sends extra data, the game and the paytable state in one answer",
   &FailureTable::allInOneAnswer},
  {"LateExtraData", "opens a paytable before the extra data of its game", &FailureTable::lateExtraData},
  {"IntegrityTextGoes", "takes an integrity text away, by event 103 with an empty text or by a state without one",
   &FailureTable::integrityTextGoes},
  {"MalformedSetup", "sends a \"paytableSetup\", \"paylines\" or \"betCost\" with a missing key or a wrong type",
   &FailureTable::malformedSetup},
  {"RefusedRegistration", "refuses the registration", &FailureTable::refusedRegistration},
  {"Silence", "accepts and stays silent", &FailureTable::silence},
};

FailureTable::FailureTable()
  : wire(new linktest::FakeTransport), holder(new GuardedTransport(xmlrpc_c::clientXmlTransportPtr(wire))) {
  // So that what the client logs by itself comes to the application too.
  EXPECT_EQ(0, app.TLogManager::Init(testing::TempDir() + "failuretable.log", nullptr, nullptr, false));
  good.ActiveGame = GameRegistryEntry(7, "Reels", GAMETYPE_VESPERA_SLOTGAME);
  good.IsLoading = false;
  good.CurrentBet = 10;
  good.MinBet = 1;
  good.MaxBet = 500;
  good.IntegrityCheckData = "checked";
  good.JackpotData.resize(2);
  wire->answer("topscreen.init", initReply(42));
  wire->answer("platform.state", stateReply(good));
  Link::pause = 0;
  client = new Link(app, holder);
  app.pKSL.reset(client);
}

std::string FailureTable::line(const std::map<std::string, std::string>& words) const {
  const auto rows = rowsOfThePage();
  const auto row = rows.find(GetParam().service);
  if (row == rows.end()) {
    ADD_FAILURE() << "not on the page: " << GetParam().service;
    return "";
  }
  return lineOf(row->second, words);
}

// The events of one answer; the service answers with nil before and after.
void FailureTable::sendEvents(const std::vector<std::string>& items) {
  app.lines.clear();
  auto sent = std::make_shared<std::atomic<bool>>(false);
  const std::string answer = replyXml(arrayXml(items));
  wire->answer("game.popEvents",
               [sent, answer](const std::string&) { return sent->exchange(true) ? Nil : answer; });
  settle();
}

// The service answers requests for events so for a while; the client stays registered and asks for the state.
void FailureTable::expectKept(const linktest::FakeTransport::Answer& answer, const std::string& error) {
  app.lines.clear();
  const size_t states = asked("platform.state");
  const size_t inits = asked("topscreen.init");
  wire->answer("game.popEvents", answer);
  settle();
  ASSERT_FALSE(lines().empty());
  for (const std::string& logged : lines())
    EXPECT_EQ("KSL CLIENT: Received error from game.popEvents -> " + error, logged);
  EXPECT_EQ(42, client->ID());
  EXPECT_EQ(inits, asked("topscreen.init")) << "registered anew";
  wire->answer("game.popEvents", Nil);
  EXPECT_TRUE(until([&] { return asked("platform.state") > states; })) << "the state was not asked for";
  settle();
}

// It answers so until the client registers anew, which it does at once.
void FailureTable::expectRegisteredAnew(const std::string& reply, const std::string& error) {
  SCOPED_TRACE(reply);
  app.lines.clear();
  registrations = asked("topscreen.init");
  wire->answer("game.popEvents", [reply, this](const std::string&) {
    return asked("topscreen.init") == registrations ? reply : Nil;
  });
  ASSERT_TRUE(until([&] { return asked("topscreen.init") > registrations && client->ID() == 42; }));
  settle();
  EXPECT_EQ(std::multiset<std::string>{"KSL CLIENT: Received error from game.popEvents -> " + error}, lines());
  EXPECT_EQ(registrations + 1, asked("topscreen.init"));
  EXPECT_EQ(0U, Link::pause) << "it waited";
}

// One bad event and a good one behind it, which counts.
void FailureTable::expectLost(int id, const std::string& context, const std::string& logged) {
  const std::string mark = "behind " + std::to_string(id) + context.substr(0, 20);
  SCOPED_TRACE(mark);
  const std::string text = "<string><![CDATA[" + mark + "]]></string>";
  sendEvents({eventXml(id, context), eventXml(T_JACKPOT_ERROR, text)});
  EXPECT_EQ(mark, state().JackpotErrorString);
  EXPECT_EQ(logged.empty() ? std::multiset<std::string>{} : std::multiset<std::string>{logged}, lines());
  EXPECT_EQ(42, client->ID());
}

// --- the rows

void FailureTable::brokenConnection() {
  start();
  const std::string error = line({});
  expectKept([](const std::string&) -> std::string { throw girerr::error("Failed to connect"); }, error);
  std::string deep = "<int>1</int>";
  for (int n = 0; n < 200; ++n) deep = arrayXml({deep});
  const std::string whole = replyXml("<int>1</int>");
  for (const std::string& reply :
       {std::string("<html><body>hello</body></html>"), whole.substr(0, whole.size() - 20), std::string(),
        std::string("no xml at all"), replyXml("<string>" + std::string(524288, 'x') + "</string>"), replyXml(deep),
        replyXml("<i8>9223372036854775808</i8>")})
    expectKept(reply, error);
}

void FailureTable::notRegistered() {
  start();
  expectRegisteredAnew(replyXml(errorStruct(-1, "who are you")), line({{"TEXT", "who are you"}}));
}

void FailureTable::communicationError() {
  start();
  const std::string error = line({{"TEXT", "lost"}});
  expectRegisteredAnew(replyXml(errorStruct(-501, "lost")), error);
  expectRegisteredAnew(faultXml(-504, "lost"), error);
  expectRegisteredAnew(faultXml(-505, "lost"), error);
}

void FailureTable::otherCode() {
  start();
  for (const int code : {-2, -6, -500, 1, 12345})
    expectKept(replyXml(errorStruct(code, "full")), line({{"CODE", std::to_string(code)}, {"TEXT", "full"}}));
}

void FailureTable::fault() {
  start();
  for (const int code : {-1, -501, -506, 7}) expectKept(faultXml(code, "broken"), line({{"TEXT", "broken"}}));
}

void FailureTable::badState() {
  start();
  const std::string whole = stateReply(PlatformState());
  std::string mistyped = whole;
  mistyped.replace(mistyped.find("<i8>"), 4, "<i4>").replace(mistyped.find("</i8>"), 5, "</i4>");
  std::string lacking = whole;
  lacking.replace(lacking.find("DemoMode"), 8, "DemoMove");
  for (const std::string& reply : {replyXml("<int>5</int>"), mistyped, lacking}) {
    SCOPED_TRACE(reply);
    app.StatusReceived(&good, false);
    app.lines.clear();
    wire->answer("platform.state", reply);
    const size_t states = asked("platform.state");
    app.hasNoData = true;
    ASSERT_TRUE(until([&] { return asked("platform.state") > states + 3; }));
    EXPECT_EQ(10, state().CurrentBet);
    EXPECT_EQ(2U, state().JackpotData.size());
    EXPECT_EQ(std::multiset<std::string>{line({})}, lines());
    sendEvents({eventXml(T_PAYTABLE_STATE, "<int>3</int>")});
    EXPECT_EQ(3, state().ShowingPaytable);
    good.CurrentBet = 11;
    wire->answer("platform.state", stateReply(good));
    ASSERT_TRUE(until([&] { return state().CurrentBet == 11; }));
    const size_t answered = asked("platform.state");
    settle();
    EXPECT_EQ(answered, asked("platform.state")) << "still asking";
    good.CurrentBet = 10;
  }
}

void FailureTable::badEvents() {
  start();
  const std::string first = eventXml(T_PAYTABLE_STATE, "<int>3</int>");
  for (const std::string& reply :
       {std::string("<int>5</int>"), std::string("<struct></struct>"), arrayXml({first, "<int>5</int>"}),
        arrayXml({first, "<struct>" + memberXml("eventID", "<int>100</int>") + "</struct>"}),
        arrayXml({first, "<struct>" + memberXml("context", "<nil/>") + "</struct>"})})
    expectKept(replyXml(reply), line({}));
  EXPECT_EQ(0, state().ShowingPaytable) << "an event of a bad answer counted";
}

void FailureTable::badContext() {
  start();
  good.Instructions = {"Spin"};
  good.LanguageMessages = {"en"};
  good.ShowingPaytable = 2;
  good.DemoMode = true;
  good.ExtraData["paylines"] = xmlrpc_c::value_int(20);
  app.StatusReceived(&good, false);
  for (const int id : {102, 106, 107, 108, 111, 112})
    for (const char* context :
         {"<double>1.0</double>", "<nil/>", "<array><data><value><int>1</int></value></data></array>"})
      expectLost(id, context, line({{"N", std::to_string(id)}}));
  EXPECT_EQ(good.Instructions, state().Instructions);
  EXPECT_EQ(good.LanguageMessages, state().LanguageMessages);
  EXPECT_EQ(2, state().ShowingPaytable);
  EXPECT_TRUE(state().DemoMode);
  EXPECT_EQ(1U, state().ExtraData.size());
}

void FailureTable::badGame() {
  start();
  const std::string contexts[] = {"<nil/>", "<struct>" + memberXml("ID", "<int>9</int>") + "</struct>"};
  for (const std::string& context : contexts)
    for (const int id : {100, 101}) {
      expectLost(id, context, line({{"N", std::to_string(id)}}));
      EXPECT_EQ(good.ActiveGame, state().ActiveGame);
      EXPECT_EQ(id == 100, state().IsLoading);
    }
}

void FailureTable::badIntegrityText() {
  start();
  for (const char* context : {"<int>5</int>", "<nil/>"}) {
    app.StatusReceived(&good, false);
    ASSERT_EQ("checked", state().IntegrityCheckData);
    expectLost(103, context, line({}));
    EXPECT_EQ("", state().IntegrityCheckData);
  }
}

void FailureTable::badBets() {
  start();
  const char* const keys[] = {"current", "min", "max"};
  for (size_t broken = 0; broken < 3; ++broken)
    for (const bool missing : {false, true}) {
      app.StatusReceived(&good, false);
      std::string context = "<struct>";
      for (size_t n = 0; n < 3; ++n)
        if (n != broken)
          context += memberXml(keys[n], "<i8>77</i8>");
        else if (!missing)
          context += memberXml(keys[n], "<int>77</int>");
      expectLost(104, context + "</struct>", line({}));
      EXPECT_EQ(broken > 0 ? 77 : 10, state().CurrentBet);
      EXPECT_EQ(broken > 1 ? 77 : 1, state().MinBet);
      EXPECT_EQ(500, state().MaxBet);
    }
}

void FailureTable::badLevels() {
  start();
  std::vector<std::string> levels;
  for (int n = 0; n < 4; ++n) {
    JackpotsData level;
    level.id = 10 + n;
    const std::string text = linktest::textOf(level.toXml());
    levels.push_back(text.substr(7, text.size() - 15));
  }
  levels[2].replace(levels[2].find("TimeTo"), 6, "TimeUp");
  expectLost(110, arrayXml(levels), line({}));
  ASSERT_EQ(2U, state().JackpotData.size());
  EXPECT_EQ(10, state().JackpotData[0].id);
  EXPECT_EQ(11, state().JackpotData[1].id);
  app.updatedJp = false;
  EXPECT_ANY_THROW(app.handlePlatformEvent(Event(110, linktest::parseValue(arrayXml(levels)))));
  EXPECT_FALSE(app.updatedJp) << "the screen is refreshed";
  expectLost(110, "<int>5</int>", line({}));
  EXPECT_EQ(2U, state().JackpotData.size());
}

void FailureTable::unknownEvent() {
  start();
  for (const int id : {-2147483647, -1, 0, 1, 16, 99, 113, 300, 2147483647})
    expectLost(id, "<int>1</int>", line({}));
  EXPECT_EQ(good.ActiveGame, state().ActiveGame);
}

void FailureTable::allInOneAnswer() {
  start();
  const std::string items[] = {
    eventXml(T_EXTRA_DATA, "<struct>" + memberXml("paylines", "<int>9</int>") + "</struct>"),
    eventXml(T_GAME_LOADED, "<struct>" + memberXml("ID", "<int>8</int>") +
                              memberXml("Name", "<string>Wheels</string>") + memberXml("Type", "<int>4</int>") +
                              "</struct>"),
    eventXml(T_PAYTABLE_STATE, "<int>1</int>")};
  std::vector<size_t> order = {0, 1, 2};
  do {
    app.StatusReceived(&good, false);
    const size_t decisions = app.deferred();
    sendEvents({items[order[0]], items[order[1]], items[order[2]]});
    EXPECT_EQ(decisions + 1, app.deferred()) << "more than the update of the paytable was asked for";
    EXPECT_EQ("Wheels", state().ActiveGame.name);
    EXPECT_EQ(1, state().ShowingPaytable);
    EXPECT_EQ(1U, state().ExtraData.count("paylines"));
    EXPECT_TRUE(lines().empty() && line({}).empty());
  } while (std::next_permutation(order.begin(), order.end()));
}

// The pages themselves: FailureTablePages, below.
void FailureTable::lateExtraData() {
  start();
  expectLost(T_PAYTABLE_STATE, "<int>1</int>", line({}));
  const size_t decisions = app.deferred();
  expectLost(T_EXTRA_DATA, "<struct>" + memberXml("paylines", "<int>9</int>") + "</struct>", line({}));
  EXPECT_EQ(decisions + 1, app.deferred()) << "the paytable was not brought up to date";
}

void FailureTable::integrityTextGoes() {
  start();
  ASSERT_EQ("checked", state().IntegrityCheckData);
  expectLost(T_INTEGRITY_DATA, "<string></string>", line({}));
  EXPECT_EQ("", state().IntegrityCheckData);
  app.updatedJp = false;
  app.handlePlatformEvent(Event(T_INTEGRITY_DATA, xmlrpc_c::value_string("")));
  EXPECT_TRUE(app.updatedJp) << "the levels would come back with the next pot";
  good.IntegrityCheckData = "text";
  app.StatusReceived(&good, false);
  ASSERT_EQ("text", state().IntegrityCheckData);
  app.updatedJp = false;
  good.IntegrityCheckData = "";
  app.StatusReceived(&good, false);
  EXPECT_EQ("", state().IntegrityCheckData);
  EXPECT_TRUE(app.updatedJp);
  EXPECT_TRUE(lines().empty());
}

void FailureTable::malformedSetup() {
  start();
  // Taken as it is: what is wrong with it shows when the pages are made.
  expectLost(T_EXTRA_DATA, "<struct>" + memberXml("paytableSetup", "<int>9</int>") + "</struct>", "");
  EXPECT_EQ(1U, state().ExtraData.count("paytableSetup"));
  // The line itself is compared with the panel's by PaytableSetups.
  EXPECT_EQ("The paytable setup of game 'Reels' is refused, what stands stays: no array",
            line({{"NAME", "Reels"}, {"CAUSE", "no array"}}));
}

void FailureTable::refusedRegistration() {
  for (const char* reason : {"full", "closed"}) {
    app.lines.clear();
    wire->answer("topscreen.init", replyXml(errorStruct(E_SERVER_FULL, reason)));
    const size_t inits = asked("topscreen.init");
    if (!client->Running()) client->Start(false, -1);
    ASSERT_TRUE(until([&] { return asked("topscreen.init") > inits + 3; }));
    EXPECT_EQ(1U, lines().count(line({{"TEXT", reason}})));
    EXPECT_EQ(1000U, Link::pause);
    EXPECT_EQ(0U, asked("game.popEvents") + asked("platform.state"));
  }
  wire->answer("topscreen.init", initReply(42));
  EXPECT_TRUE(until([&] { return client->ID() == 42; }));
}

void FailureTable::silence() {
  start();
  linktest::Gate gate;
  wire->answer("game.popEvents", [&gate](const std::string&) -> std::string {
    gate.pass();
    throw girerr::error("shut");
  });
  ASSERT_TRUE(until([&] { return gate.arrived() == 1; }));
  app.lines.clear();
  for (int n = 0; n < 100; ++n) EXPECT_EQ(0, app.RunOnce());
  EXPECT_TRUE(lines().empty());
  EXPECT_EQ("", line({}));
  EXPECT_EQ(1, gate.arrived());
  EXPECT_EQ(42, client->ID());
  gate.open();
  ASSERT_TRUE(until([&] { return !lines().empty(); }));
  EXPECT_EQ("KSL CLIENT: Received error from game.popEvents -> 1 - sendInternal(): Connection failed",
            *lines().begin());
  EXPECT_NE(std::string::npos, rowsOfThePage()[GetParam().service].find("`1 - sendInternal(): Connection failed`"));
  wire->answer("game.popEvents", Nil);
  client->Stop();
}

}  // namespace

TEST_P(FailureTable, LooksAsThePageSays) { (this->*GetParam().happens)(); }

INSTANTIATE_TEST_SUITE_P(Rows, FailureTable, testing::ValuesIn(Rows),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FailureTablePage, EveryRowHasItsTestAndEveryTestItsRow) {
  std::set<std::string> onThePage;
  for (const auto& [service, log] : rowsOfThePage()) onThePage.insert(service);
  std::set<std::string> tested;
  for (const Row& row : Rows) tested.insert(row.service);
  EXPECT_EQ(onThePage, tested);
}

// On the pages: whatever the order of the three, and also when the extra data come last by far.
TEST(FailureTablePages, ExtraDataGameAndPaytableShowTheSameInAnyOrder) {
  using paneldata::gameValue;
  const xmlrpc_c::value extra =
    xmlrpc_c::value_struct(paneldata::setup({paneldata::page("paytable", {paneldata::Text{}})}, 20, -1));
  const std::pair<int, xmlrpc_c::value> events[] = {{T_EXTRA_DATA, extra},
                                                    {T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME)},
                                                    {T_PAYTABLE_STATE, xmlrpc_c::value_int(1)}};
  const char* prize = "pPaytablesPanel/HelpScreen/A_3";
  std::vector<size_t> order = {0, 1, 2};
  do {
    TopScreenHarness screen("failuretable", 4);
    screen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.CurrentBet = 100;
    });
    screen.app().deliver({events[order[0]], events[order[1]], events[order[2]]});
    EXPECT_TRUE(screen.until([&] { return screen.visible("pPaytablesPanel") && screen.visible(prize); }));
  } while (std::next_permutation(order.begin(), order.end()));

  TopScreenHarness screen("failuretable", 4);
  screen.status([](PlatformState& state) {
    state.ActiveGame = GAME_MENU;
    state.CurrentBet = 100;
  });
  testing::internal::CaptureStdout();
  screen.app().deliver({events[1], events[2]});
  EXPECT_TRUE(screen.until([&] { return screen.visible("pPaytablesPanel"); }));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(nullptr, screen.find(prize));
  screen.app().deliver({events[0]});
  EXPECT_TRUE(screen.until([&] { return screen.visible(prize); }));
}
