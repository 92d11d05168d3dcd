#include "marrowctl/support/json_text.h"

#include <nlohmann/json.hpp>

namespace marrowbench::ctl {

Json jsonFrom(std::string_view text) { return Json::parse(text, nullptr, false); }

std::string jsonTextOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace marrowbench::ctl
