#ifndef MARROWBENCH_MARROWCTL_SUPPORT_JSON_TEXT_H
#define MARROWBENCH_MARROWCTL_SUPPORT_JSON_TEXT_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

/// The library's parser and writer, compiled once: in each file that calls them they take longer
/// than all the rest of it.
namespace marrowbench::ctl {

/// Members keep the order in which they were written.
using Json = nlohmann::ordered_json;

/// @return what `text` tells; is_discarded() is true of it where that is no JSON
[[nodiscard]] Json jsonFrom(std::string_view text);

/// In one line, without its end. Bytes of texts that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string jsonTextOf(const Json& value);

}  // namespace marrowbench::ctl

#endif
