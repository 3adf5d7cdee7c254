#pragma once

struct PlatformState;

// What the platform's state asks of the screen: which panel is due and whether these data end the loader.
struct TPanelDecision {
  enum Panel {
    KEEP,            // whatever stands, stays
    STOP_RENDERING,  // a roulette game has the display
    INSTRUCTIONS,
    JACKPOTS_NO_GAME,  // levels, without a game's overlay
    JACKPOTS,
    PAYTABLES
  };
  Panel panel;
  bool rendering;   // rendering is to be on; a roulette game leaves it as it is or stops it
  bool endsLoader;  // data of this kind, when they are the first, take the program from the loader to the panels
};

// Pure: no thread, no window. The caller holds the lock of `state`.
TPanelDecision decidePanel(const PlatformState& state);
