#include "marrowctl/report/page/local_time.h"

#include <cmath>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "marrowctl/report/output.h"

namespace marrowbench::ctl {
namespace {

std::string isoTimeOf(double seconds) {
  return isoTime(static_cast<std::int64_t>(std::floor(seconds)));
}

}  // namespace

double localSeconds(double seconds) {
  const auto whole = static_cast<std::time_t>(std::floor(seconds));
  std::tm local{};
  (void)localtime_r(&whole, &local);
  return seconds + static_cast<double>(local.tm_gmtoff);
}

std::string shownTime(double seconds) {
  constexpr std::string_view kDate = "2026-11-16", kBoth = "2026-11-16T02:21:29";
  std::string time = isoTimeOf(seconds).substr(0, kBoth.size());
  time[kDate.size()] = ' ';
  return time;
}

std::string shownOffset(double seconds) {
  const std::string time = isoTimeOf(seconds);
  return "UTC" + time.substr(time.size() - std::string_view("+00:00").size());
}

}  // namespace marrowbench::ctl
