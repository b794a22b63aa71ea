#include "cli/check/wild.h"

#include <climits>
#include <limits>

namespace cli::check {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kNumbers[] = {0,
                               -0.0,
                               0.5,
                               -1,
                               1,
                               100,
                               -100,
                               1e6,
                               -1e6,
                               2147483647.0,
                               2147483648.0,
                               -2147483648.0,
                               -2147483649.0,
                               1e18,
                               1e38,
                               -1e38,
                               1e300,
                               -1e300,
                               5e-324,
                               kInfinity,
                               -kInfinity,
                               kNaN};
constexpr std::int32_t kIntegers[] = {INT_MIN, INT_MIN + 1, -100'000, -2,   -1,          0,      1,
                                      2,       3,           40,       1001, INT_MAX - 1, INT_MAX};
constexpr double kFlakeCounts[] = {0, 0.99, 1, -5, 3.7, -kInfinity, 1e300, kNaN};
constexpr double kUsualFlakes = 20;

// Gives the definition a wild value of its type.
void MakeWild(Random& random, PF_ParamDef& def) {
  switch (def.param_type) {
    case PF_Param_FLOAT_SLIDER:
      def.u.fs_d.value = random.Of(kNumbers);
      break;
    case PF_Param_SLIDER:
      def.u.sd.value = WildInteger(random);
      break;
    case PF_Param_POPUP:
      def.u.pd.value = WildInteger(random);
      break;
    case PF_Param_CHECKBOX:
      def.u.bd.value = WildInteger(random);
      break;
    case PF_Param_POINT:
      def.u.td.x_value = WildInteger(random);
      def.u.td.y_value = WildInteger(random);
      break;
    default:  // every color is one
      break;
  }
}

}  // namespace

std::int32_t WildInteger(Random& random) {
  return random.Of(kIntegers);
}

void WildParameters::operator()(std::int32_t index, std::int32_t, PF_ParamDef& def) const {
  if (index == flakes_) {
    def.u.fs_d.value = random_.OneIn(4) ? random_.Of(kFlakeCounts) : kUsualFlakes;
  } else if (random_.OneIn(share_)) {
    MakeWild(random_, def);
  }
}

}  // namespace cli::check
