#include "TextSamples.h"

namespace {

constexpr char kCurrency[] = "Fonts/currency";
constexpr char kHint[] = "Fonts/uni_font";
constexpr char kNotice[] = "Fonts/jackpot_win_label";
constexpr char kHistory[] = "Fonts/info_bar_font";
constexpr char kHours[] = "Fonts/emerald_hours_font";
constexpr char kButton[] = "Fonts/HelveticaBold26px_Instructions";
constexpr char kCaption[] = "Fonts/HelveticaBold20px_SmallLabel";
constexpr char kPrize[] = "";

// The hours' line may be higher than its field: below it there is nothing for 25 pixels, then come the digits.
constexpr TextRoom kRooms[] = {{kCurrency, 130, 91, false, 0, "the currency beside the digits"},
                               {kHint, 1920, 25, true, 0, "the hint at the foot of the screen"},
                               {kNotice, 1920, 150, true, 0, "the notice across the screen"},
                               {kHistory, 0, 91, false, 0, "the running text"},
                               {kHours, 430, 62, false, 25, "the opening hours"},
                               {kButton, 101, 80, true, 0, "a button's function"},
                               {kCaption, 101, 20, true, 0, "a button's name"}};

}  // namespace

const TextRoom* roomOf(const std::string& font) {
  for (const TextRoom& room : kRooms)
    if (font == room.font) return &room;
  return nullptr;
}

const std::vector<TextSample>& textSamples() {
  static const auto& samples = *new std::vector<TextSample>{
    {kCurrency, true, "EUR"},
    {kCurrency, false, "€"},
    {kCurrency, false, "$"},

    {kHint, true, "Select bet per line with BET+/- and press SPIN button to start new game."},
    {kHint, true, "All prizes are shown for the current bet."},
    {kHint, false, "Einsatz pro Linie mit BET+/- wählen und mit SPIN ein neues Spiel beginnen."},
    {kHint, false, "Alle Preise gelten für den aktuellen Einsatz."},

    {kNotice, true, "INTEGRITY CHECK IN PROGRESS  -  PLEASE WAIT"},
    {kNotice, true, "Integrity check\nCRC 5A3C 09F1\nRunning ..."},
    {kNotice, true, "JACKPOT IS OUT OF SERVICE"},
    {kNotice, false, "INTEGRITÄTSPRÜFUNG LÄUFT  -  BITTE WARTEN"},
    {kNotice, false, "Integritätsprüfung\nCRC 5A3C 09F1\nläuft ..."},
    {kNotice, false, "JACKPOT AUSSER BETRIEB"},

    {kHistory, true, "Last won 28.09.2026 21:14  -  1,284,930.50 EUR"},
    {kHistory, true, "Last won: 1284930.50 EUR"},
    {kHistory, false, "Zuletzt gewonnen am 28.09.2026 um 21:14 Uhr  -  1.284.930,50 €"},

    {kHours, true, "00:00 - 23:30"},
    {kHours, false, "10:00 Uhr - 23:30 Uhr"},

    {kButton, true, "AUTO\nSTART"},
    {kButton, true, "OTHER\nGAMES"},
    {kButton, true, "CALL\nSTAFF"},
    {kButton, true, "BET\nDOWN"},
    {kButton, true, "PAY\nTABLE"},
    {kButton, true, "BET\nUP"},
    {kButton, true, "START"},
    {kButton, true, "Instruction1"},
    {kButton, false, "AUTO-\nSTART"},
    {kButton, false, "ANDERE\nSPIELE"},
    {kButton, false, "SERVICE\nRUFEN"},
    {kButton, false, "EINSATZ\nERHÖHEN"},
    {kButton, false, "GEWINN-\nPLAN"},

    {kCaption, true, "Auto Spin"},
    {kCaption, true, "Payout"},
    {kCaption, true, "Game Select"},
    {kCaption, true, "Service"},
    {kCaption, true, "Bet- Red"},
    {kCaption, true, "Info"},
    {kCaption, true, "Bet+ Black"},
    {kCaption, true, "Spin"}};
  return samples;
}

// The wheels know a point and a comma; amounts are written with the separator that the platform names, which in
// some countries is a blank or an apostrophe.
const std::vector<TextSample>& neededCharacters() {
  static const auto& characters = *new std::vector<TextSample>{{kCurrency, true, "0123456789.,"},
                                                               {kHistory, true, "0123456789.,:-"},
                                                               {kHours, true, "0123456789:- "},
                                                               {kPrize, true, "0123456789.,"},
                                                               {kPrize, false, " '"}};
  return characters;
}
