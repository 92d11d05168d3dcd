#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "marrowctl/report/output.h"

namespace marrowbench::ctl {

std::string isoTime(std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm at{};
  (void)localtime_r(&time, &at);
  const long offset = at.tm_gmtoff / 60;
  char text[64];
  (void)std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02ld:%02ld",
                      at.tm_year + 1900, at.tm_mon + 1, at.tm_mday, at.tm_hour, at.tm_min,
                      at.tm_sec, offset < 0 ? '-' : '+', std::labs(offset) / 60,
                      std::labs(offset) % 60);
  return text;
}

}  // namespace marrowbench::ctl
