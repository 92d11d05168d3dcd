#ifndef MARROWBENCH_MARROWCTL_SUPPORT_HTML_TEXT_H
#define MARROWBENCH_MARROWCTL_SUPPORT_HTML_TEXT_H

#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// The text as it may stand anywhere in an HTML page, in quoted attributes too. What is no UTF-8
/// and control characters become U+FFFD.
[[nodiscard]] std::string htmlText(std::string_view text);

/// A JSON document as it may stand inside a script element, where "<" could end or change the
/// element: each becomes "\u003c". JSON has it in strings only.
[[nodiscard]] std::string jsonInScript(std::string_view json);

}  // namespace marrowbench::ctl

#endif
