#include "tools/kslsim/Pots.h"

#include <algorithm>
#include <limits>

namespace kslsim {
namespace {

using Wide = __int128;  // an amount times a time does not fit 64 bits

int64_t narrow(Wide value) {
  return static_cast<int64_t>(
    std::clamp<Wide>(value, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()));
}

}  // namespace

void Pots::ramp(int level, int64_t from, int64_t to, int64_t now, int64_t duration, int64_t every) {
  mMovements[level] = Movement{false, now, every, 0, from, to, duration, 0, 0, {}};
}

void Pots::grow(int level, int64_t now, int64_t every, int64_t least, int64_t most, uint64_t seed) {
  mMovements[level] = Movement{true, now, every, 0, 0, 0, 0, least, most, std::mt19937_64(seed)};
}

int64_t Pots::next(Movement& movement, int64_t now, const Json& level, bool& ended) {
  const int64_t due = (now - movement.start) / movement.every;
  const int64_t pot = level["CurrentPot"].get<int64_t>();
  if (!movement.grows) {
    const int64_t elapsed = now - movement.start;
    ended = elapsed >= movement.duration;
    if (ended) return movement.to;
    if (due == movement.done) return pot;
    movement.done = due;
    return narrow(Wide(movement.from) +
                  (Wide(movement.to) - movement.from) * (Wide(due) * movement.every) / movement.duration);
  }
  Wide grown = pot;
  for (; movement.done < due; ++movement.done) {
    const uint64_t span = static_cast<uint64_t>(movement.most) - static_cast<uint64_t>(movement.least) + 1;
    grown += Wide(movement.least) + (span ? movement.random() % span : movement.random());
  }
  const int64_t limit = level["MaxPot"].get<int64_t>();
  if (limit > 0 && grown > limit) return std::max(pot, limit);
  return narrow(grown);
}

void Pots::advance(int64_t now, Platform& platform) {
  const Json levels = platform.state()["JackpotData"];
  for (auto it = mMovements.begin(); it != mMovements.end();) {
    const int id = it->first;
    const auto level = std::find_if(levels.begin(), levels.end(), [id](const Json& l) { return l["Id"] == id; });
    bool ended = level == levels.end();
    if (!ended) {
      const int64_t pot = next(it->second, now, *level, ended);
      if (pot != (*level)["CurrentPot"].get<int64_t>()) platform.setLevel(id, {{"CurrentPot", pot}}, "");
    }
    it = ended ? mMovements.erase(it) : std::next(it);
  }
}

}  // namespace kslsim
