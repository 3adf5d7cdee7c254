// Two games with their folders: still and animated overlay, background, paytable pages in two languages, prize
// font.
#include "Games.h"

#include "FontPack.h"
#include "Typeface.h"

namespace {
const std::vector<PageTexts>& crownTexts() {
  static const std::vector<PageTexts> texts = {
    {"paytable",
     "PAYTABLE",
     "THE EVENING STAR",
     "RULES",
     "on any position",
     {"Three or more stars on any position", "open the treasury: ten free games.", "",
      "During free games all stones pay double", "and the crown stands for every stone.", "",
      "Three more stars add five free games."},
     {"Wins on lines are paid from left to right, beginning on the first reel.",
      "Only the highest win on each line is paid. All prizes are shown for the current bet.",
      "A malfunction voids all pays and plays."}},
    {"paytable_de",
     "GEWINNPLAN",
     "DER ABENDSTERN",
     "REGELN",
     "auf beliebiger Position",
     {"Drei oder mehr Sterne auf beliebiger", "Position öffnen die Schatzkammer:", "zehn Freispiele.", "",
      "In Freispielen zahlen alle Steine doppelt,", "und die Krone ersetzt jeden Stein.", "",
      "Drei weitere Sterne: fünf Freispiele mehr."},
     {"Gewinne auf Linien zählen von links nach rechts, beginnend auf der ersten Walze.",
      "Nur der höchste Gewinn jeder Linie wird gezahlt. Alle Preise gelten für den aktuellen Einsatz.",
      "Eine Störung macht alle Spiele und Gewinne ungültig."}}};
  return texts;
}

const std::vector<PageTexts>& orchardTexts() {
  static const std::vector<PageTexts> texts = {
    {"paytable",
     "PAYTABLE",
     "GOLDEN HARVEST",
     "RULES",
     "on any position",
     {"Three or more stars on any position", "start the harvest: eight free games.", "",
      "Every harvest picks one fruit that", "grows over its whole reel.", "",
      "Three more stars add four free games."},
     {"Wins on lines are paid from left to right, beginning on the first reel.",
      "Only the highest win on each line is paid. All prizes are shown for the current bet.",
      "A malfunction voids all pays and plays."}},
    {"paytable_de",
     "GEWINNPLAN",
     "GOLDENE ERNTE",
     "REGELN",
     "auf beliebiger Position",
     {"Drei oder mehr Sterne auf beliebiger", "Position starten die Ernte:", "acht Freispiele.", "",
      "Jede Ernte wählt eine Frucht, die", "ihre ganze Walze füllt.", "",
      "Drei weitere Sterne: vier Freispiele mehr."},
     {"Gewinne auf Linien zählen von links nach rechts, beginnend auf der ersten Walze.",
      "Nur der höchste Gewinn jeder Linie wird gezahlt. Alle Preise gelten für den aktuellen Einsatz.",
      "Eine Störung macht alle Spiele und Gewinne ungültig."}}};
  return texts;
}

const std::vector<Game>& games() {
  static const std::vector<Game> list = {{"VesperCrown",
                                          {"VESPER", "CROWN"},
                                          {0.012, 0.020, 0.075},
                                          {0.16, 0.26, 0.72},
                                          drawCrown,
                                          {drawCrown, drawRuby, drawSapphire, drawJade, drawAmethyst, drawTopaz},
                                          crownTexts()},
                                         {"SevenOrchards",
                                          {"SEVEN", "ORCHARDS"},
                                          {0.010, 0.050, 0.030},
                                          {0.20, 0.52, 0.16},
                                          drawSeven,
                                          {drawSeven, drawMelon, drawPlum, drawOrange, drawLemon, drawCherries},
                                          orchardTexts()}};
  return list;
}

// The amounts on the pages; the bet labels take the TrueType font of the same name.
void drawPrizeFont(const Game& game, const Output& output) {
  const Typeface face(fontfile::kCondensedBold, 46);
  FontPack font({{{0.0, {1.0, 1.0, 0.94}}, {0.5, {1.0, 0.90, 0.58}}, {1.0, {0.99, 0.74, 0.28}}},
                 {0.035, 0.022, 0.010},
                 1.8,
                 2,
                 0.5},
                kFieldHeight, 44);
  font.add(face, U"0123456789.,'- \u00a0\u202f");
  const std::string base = "Games/" + game.name + "/Icons/prize";
  font.save(output.path(base), "prize", 256);
  output.copy(fontfile::kCondensedBold, base + ".ttf");
}

void drawStill(const Game& game, const Output& output) {
  const std::unique_ptr<Canvas> still = drawGameGround(game, 1920);
  const std::unique_ptr<Canvas> emblem = drawEmblem(game, 1.45);
  const int left = (1920 - emblem->width()) / 2, top = (1040 - emblem->height()) / 2;
  still->paint(*emblem, left, top, 1);
  still->saveJpeg(output.path("Games/" + game.name + "/Icons/topscreen.jpg"), 90);
}
}  // namespace

void drawGames(const Output& output) {
  for (const Game& game : games()) {
    drawGameGround(game, 960)->save(output.path("Games/" + game.name + "/Icons/background.png"));
    drawPrizeFont(game, output);
    drawStill(game, output);
    drawOverlay(game, output);
    drawPages(game, output);
  }
}
