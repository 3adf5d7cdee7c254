#include "vesperatopscreen/PanelDecision.h"

#include <algorithm>

#include "common/TKSLReturnStructures.h"

TPanelDecision decidePanel(const PlatformState& state) {
  switch (state.ActiveGame.type) {
    case GAMETYPE_ROULETTE:
      // While the game loads the old picture stays on. The loader, if it still stands, stays in both cases.
      return {state.IsLoading ? TPanelDecision::KEEP : TPanelDecision::STOP_RENDERING, false, false};
    case GAMETYPE_MENU:
    case GAMETYPE_NULL_TYPE:
      return {state.Instructions.empty() ? TPanelDecision::JACKPOTS_NO_GAME : TPanelDecision::INSTRUCTIONS, true,
              true};
    case GAMETYPE_VESPERA_SLOTGAME: {
      const bool win = std::any_of(state.JackpotData.begin(), state.JackpotData.end(),
                                   [](const JackpotsData& level) { return level.status == "WIN"; });
      // A terminal that stands on a paytable does not end the loader; a jackpot win takes the screen back.
      if (state.ShowingPaytable != 0 && !win) return {TPanelDecision::PAYTABLES, true, false};
      return {TPanelDecision::JACKPOTS, true, true};
    }
    default:
      return {TPanelDecision::KEEP, true, true};
  }
}
