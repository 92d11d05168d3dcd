#include "marrowctl/report/page/local_time.h"

#include <cmath>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "marrowctl/report/output.h"

namespace marrowbench::ctl {

double localSeconds(double seconds) {
  const auto whole = static_cast<std::time_t>(std::floor(seconds));
  std::tm local{};
  (void)localtime_r(&whole, &local);
  return seconds + static_cast<double>(local.tm_gmtoff);
}

std::string shownOffset(double seconds) {
  const std::string time = isoTime(static_cast<std::int64_t>(std::floor(seconds)));
  return "UTC" + time.substr(time.size() - std::string_view("+00:00").size());
}

}  // namespace marrowbench::ctl
