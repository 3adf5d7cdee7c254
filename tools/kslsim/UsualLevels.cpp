#include "tools/kslsim/UsualLevels.h"

namespace kslsim {
namespace {

struct UsualLevel {
  const char* name;
  int mode;
  int64_t pot, least, most, bets, share;
};
constexpr UsualLevel kUsual[kHouseLevels] = {{"GOLD", 1, 124837519, 100000000, 200000000, 900, 20},
                                             {"SILVER", 1, 8463072, 5000000, 15000000, 600, 10},
                                             {"BRONZE", 1, 731864, 250000, 1000000, 400, 8},
                                             {"EMERALD", 2, 58975, 20000, 75000, 300, 5}};

}  // namespace

std::vector<Json> houseSteps(int levels, uint64_t seed) {
  std::vector<Json> out;
  for (int id = 0; id < levels && id < kHouseLevels; ++id) {
    const UsualLevel& usual = kUsual[id];
    Json level{{"Id", id},
               {"Name", usual.name},
               {"Mode", usual.mode},
               {"CurrentPot", usual.pot},
               {"MinPot", usual.least},
               {"MaxPot", usual.most}};
    if (usual.mode == 2) level.update({{"TimeFrom", "18:00"}, {"TimeTo", "23:30"}});
    out.push_back({{"do", "add"}, {"level", level}});
    out.push_back({{"do", "play"},
                   {"id", id},
                   {"bets", usual.bets},
                   {"share", usual.share},
                   {"seed", (seed + static_cast<uint64_t>(id)) & INT64_MAX}});
  }
  return out;
}

}  // namespace kslsim
