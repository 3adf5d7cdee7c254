// The structs of the protocol: keys, forms and the values with which a fresh platform starts.
#include "tools/kslsim/Wire.h"

namespace kslsim {

const std::vector<Field>& gameFields() {
  static const auto& fields =
    *new std::vector<Field>{{"ID", Kind::Int, 0}, {"Name", Kind::String, ""}, {"Type", Kind::Int, 1}};
  return fields;
}

const std::vector<Field>& betFields() {
  static const auto& fields =
    *new std::vector<Field>{{"current", Kind::I8, 0}, {"min", Kind::I8, 0}, {"max", Kind::I8, 0}};
  return fields;
}

const std::vector<Field>& levelFields() {
  static const auto& fields = *new std::vector<Field>{{"Name", Kind::String, "LEVEL"},
                                                      {"Id", Kind::Int, 0},
                                                      {"Status", Kind::String, "ACTIVE"},
                                                      {"Mode", Kind::Int, 0},
                                                      {"CurrentPot", Kind::I8, 0},
                                                      {"MinPot", Kind::I8, 0},
                                                      {"MaxPot", Kind::I8, 0},
                                                      {"MinBet", Kind::I8, 0},
                                                      {"MaxBet", Kind::I8, 0},
                                                      {"DecimalPlaces", Kind::Int, 2},
                                                      {"ShowCurrencySign", Kind::Bool, true},
                                                      {"Currency", Kind::String, "EUR"},
                                                      {"NumWins", Kind::Int, 0},
                                                      {"LastWinData", Kind::String, ""},
                                                      {"TimeFrom", Kind::String, ""},
                                                      {"TimeTo", Kind::String, ""}};
  return fields;
}

const std::vector<Field>& stateFields() {
  static const auto& fields = *new std::vector<Field>{
    {"IntegrityCheckData", Kind::String, ""},
    {"ActiveGame", Kind::Game, startOf(gameFields())},
    {"IsLoading", Kind::Bool, false},
    {"ShowingPaytable", Kind::Int, 0},
    {"LanguageMessages", Kind::Strings,
     Json::array({"en", "Minimum bet", "Maximum bet",
                  "Select bet per line with BET+/- and press SPIN button to start new game.",
                  "Prizes are shown for the current bet."})},
    {"DemoMode", Kind::Bool, false},
    {"Instructions", Kind::Strings, Json::array()},
    {"CurrentBet", Kind::I8, 0},
    {"MinBet", Kind::I8, 0},
    {"MaxBet", Kind::I8, 0},
    {"ExtraData", Kind::Extra, Json::object()},
    {"JackpotData", Kind::Levels, Json::array()},
    {"JackpotErrorString", Kind::String, ""}};
  return fields;
}

const std::vector<Field>& initFields() {
  static const auto& fields = *new std::vector<Field>{{"Locale", Kind::String, "C.UTF-8"},
                                                      {"DecimalSeparator", Kind::String, "."},
                                                      {"ThousandSeparator", Kind::String, ","},
                                                      {"ThousandGrouping", Kind::Int, 3},
                                                      {"Language", Kind::String, "en"}};
  return fields;
}

const std::vector<Field>& serviceFields() {
  static const auto& fields = *new std::vector<Field>{{"Admit", Kind::Bool, true},
                                                      {"UniqueNames", Kind::Bool, false},
                                                      {"Names", Kind::Strings, Json::array()},
                                                      {"MaxClients", Kind::Int, 1024},
                                                      {"Unsupported", Kind::Strings, Json::array()},
                                                      {"Volume", Kind::Int, 50},
                                                      {"Denomination", Kind::I8, 1}};
  return fields;
}

Json startOf(const std::vector<Field>& fields) {
  Json out = Json::object();
  for (const Field& field : fields) out[field.name] = field.start;
  return out;
}

const Field* findField(const std::vector<Field>& fields, const std::string& name) {
  for (const Field& field : fields)
    if (name == field.name) return &field;
  return nullptr;
}

}  // namespace kslsim
