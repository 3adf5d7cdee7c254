// What each event of the platform does to the state and to the screen.
#include <stdexcept>
#include <vector>

#include "common/Event.h"
#include "vesperatopscreen/TopScreenApp.h"
#include "vesperatopscreen/TopScreenScreen.h"

using namespace vendelo_sdl2;

namespace {

// Throws when the context is missing; a value of another type throws where it is read. The client logs either
// and goes on with the next event.
xmlrpc_c::value valueOf(const Event& event) {
  if (!event.context()) throw std::runtime_error("the event has no value");
  return xmlrpc_c::value(event.context());
}

std::vector<std::string> textsOf(const Event& event) {
  std::vector<std::string> texts;
  for (const xmlrpc_c::value& item : xmlrpc_c::value_array(valueOf(event)).vectorValueValue())
    texts.push_back(xmlrpc_c::value_string(item).cvalue());
  return texts;
}

}  // namespace

int TopScreenApp::handlePlatformEvent(const Event& event) {
  ScopedLock lock(state);
  switch (event.id()) {
    case T_GAME_LOADING:
      state->IsLoading = true;
      state->ActiveGame = gameFromXml(valueOf(event));
      updatedGame = true;
      break;
    case T_GAME_LOADED:
      state->IsLoading = false;
      state->ActiveGame = gameFromXml(valueOf(event));
      updatedGame = true;
      break;
    case T_DEMO_MODE:
      state->DemoMode = xmlrpc_c::value_boolean(valueOf(event)).cvalue();
      if (screen) screen->SetDemoMode(state->DemoMode);
      break;
    case T_INTEGRITY_DATA:
      state->IntegrityCheckData = event.asString();
      if (screen) screen->SetIntegrityCheckData(state->IntegrityCheckData);
      updatedJp = true;  // the levels come back when the text goes
      break;
    case T_BET_LIMITS: {
      // A mistyped key leaves itself and the fields behind it as they were.
      xmlrpc_int64 current = state->CurrentBet, least = state->MinBet, most = state->MaxBet;
      event.readEventIntoVariables("{s:I,s:I,s:I,*}", "current", &current, "min", &least, "max", &most);
      state->CurrentBet = current;
      state->MinBet = least;
      state->MaxBet = most;
      updatedGame = true;
      break;
    }
    case T_GAME_EXITED:
      state->ActiveGame = GAME_MENU;
      state->IsLoading = false;
      updatedGame = true;
      break;
    case T_INSTRUCTIONS:
      state->Instructions = textsOf(event);
      if (screen) screen->UpdateInstructionsPanel();
      deferInstructionsOrJackpots();
      break;
    case T_PAYTABLE_STATE:
      state->ShowingPaytable = xmlrpc_c::value_int(valueOf(event)).cvalue();
      updatedGame = true;
      break;
    case T_JACKPOT_ERROR:
      state->JackpotErrorString = xmlrpc_c::value_string(valueOf(event)).cvalue();
      updatedJp = true;
      break;
    case T_JACKPOT_REFRESH:
      updatedJp = true;
      break;
    case T_JACKPOT_DATA:
      state->parseJackpotData(valueOf(event));
      updatedJp = true;
      break;
    case T_EXTRA_DATA:
      state->ExtraData = xmlrpc_c::value_struct(valueOf(event)).cvalue();
      updatedGame = true;
      break;
    case T_LANGUAGE:
      state->LanguageMessages = textsOf(event);
      if (screen) screen->UpdateLanguage(state->LanguageMessages);
      break;
    default:
      break;
  }
  return 0;
}

// At once and whatever the game: the next change of game puts the panel right again.
void TopScreenApp::deferInstructionsOrJackpots() {
  if (!screen) return;
  if (state->Instructions.empty())
    DeferToDraw([this] { screen->ShowJackpotsPanel(); }, false);
  else
    DeferToDraw([this] { screen->ShowInstructionsPanel(); }, false);
}
