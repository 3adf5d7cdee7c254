#include "tools/kslsim/House.h"

#include <algorithm>
#include <cmath>

namespace kslsim {
namespace {

constexpr int64_t kMinute = 60000;
constexpr int64_t kThousand = 1000;
constexpr int64_t kMostBets = 100000;  // in one look

// Higher stakes are rarer. Drawn by hand: the library's distributions are not the same everywhere.
constexpr int64_t kStakes[] = {1, 1, 1, 1, 1, 2, 2, 2, 3, 3, 5, 10};

double fraction(std::mt19937_64& random) { return static_cast<double>(random() >> 11) * 0x1.0p-53; }

// How many bets come when `mean` are expected: the waits between them are exponential.
int64_t arrivals(std::mt19937_64& random, double mean) {
  int64_t out = -1;
  for (double waited = 0; waited < mean && out < kMostBets; ++out) waited -= std::log(1.0 - fraction(random));
  return std::max<int64_t>(out, 0);
}

// Above `from`, up to `most`; in unsigned numbers, for the way between the two may not fit a signed one.
int64_t between(std::mt19937_64& random, int64_t from, int64_t most) {
  const uint64_t first = static_cast<uint64_t>(from), span = static_cast<uint64_t>(most) - first;
  return static_cast<int64_t>(first + 1 + random() % span);
}

std::string amountText(int64_t amount, const Json& level) {
  const int places = std::clamp(level["DecimalPlaces"].get<int>(), 0, 9);
  std::string digits = std::to_string(amount);
  if (static_cast<int>(digits.size()) <= places)
    digits.insert(0, static_cast<size_t>(places) + 1 - digits.size(), '0');
  if (places > 0) digits.insert(digits.size() - static_cast<size_t>(places), ".");
  return digits + " " + level["Currency"].get<std::string>();
}

}  // namespace

int oneMoreWin(const Json& level) {
  const int wins = level["NumWins"].get<int>();
  return wins == INT32_MAX ? wins : wins + 1;
}

void House::open(int level, const Guests& guests, int64_t now) {
  mTables[level] = Table{guests, now, 0, 0, -1, 0, "", std::mt19937_64(guests.seed)};
}

std::vector<int> House::tables() const {
  std::vector<int> out;
  for (const auto& [level, table] : mTables) out.push_back(level);
  return out;
}

void House::look(Table& table, Json& level, Json& part) {
  const auto set = [&](const char* field, const Json& value) { part[field] = level[field] = value; };
  const int64_t least = level["MinPot"].get<int64_t>(), most = level["MaxPot"].get<int64_t>();
  if (table.winLeft > 0) {
    if (--table.winLeft > 0) return;
    set("Status", table.statusBefore);
    set("CurrentPot", least);
    table.hit = -1;
    return;  // so that everybody sees the end of the win, however soon the next one comes
  }
  int64_t pot = level["CurrentPot"].get<int64_t>();
  // A pot that was set beyond the value, or a limit that was moved, calls for a new one.
  if (table.hit < 0 || table.hit > most || (table.hit == 0 && most > pot)) {
    const int64_t from = std::max(pot, least);
    table.hit = most > from ? between(table.random, from, most) : 0;
  }
  const double mean = static_cast<double>(table.guests.bets) * static_cast<double>(table.guests.every) / kMinute;
  for (int64_t bets = arrivals(table.random, mean); bets > 0; --bets)
    table.thousandths += table.guests.bet * kStakes[table.random() % std::size(kStakes)] * table.guests.share;
  const int64_t grown = table.thousandths / kThousand;
  table.thousandths %= kThousand;
  if (grown == 0 && !(table.hit > 0 && pot >= table.hit)) return;
  if (__builtin_add_overflow(pot, grown, &pot)) return;
  if (table.hit > 0 && pot >= table.hit) {
    pot = table.hit;
    table.statusBefore = level["Status"].get<std::string>();
    if (table.statusBefore == "WIN") table.statusBefore = "ACTIVE";
    table.winLeft = std::max<int64_t>(table.guests.show / table.guests.every, 1);
    set("Status", "WIN");
    set("NumWins", oneMoreWin(level));
    set("LastWinData", "Last won: " + amountText(pot, level));
  }
  set("CurrentPot", pot);
}

void House::advance(int64_t now, Platform& platform) {
  for (auto it = mTables.begin(); it != mTables.end();) {
    const int id = it->first;
    Table& table = it->second;
    const Json& levels = platform.state()["JackpotData"];
    const auto found = std::find_if(levels.begin(), levels.end(), [id](const Json& l) { return l["Id"] == id; });
    if (found == levels.end()) {
      it = mTables.erase(it);
      continue;
    }
    ++it;
    const int64_t due = (now - table.start) / table.guests.every;
    if (table.done >= due) continue;
    Json level = *found, part = Json::object();
    for (; table.done < due; ++table.done) look(table, level, part);
    if (!part.empty()) platform.setLevel(id, part, "");
  }
}

}  // namespace kslsim
