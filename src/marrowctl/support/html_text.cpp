#include "marrowctl/support/html_text.h"

#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

template <class Replacement>
std::string replaced(std::string_view text, Replacement replacementOf) {
  std::string result;
  result.reserve(text.size() + text.size() / 16);
  for (const char letter : text) {
    const std::string_view other = replacementOf(letter);
    if (other.empty()) {
      result += letter;
    } else {
      result += other;
    }
  }
  return result;
}

std::string_view entityOf(char letter) {
  switch (letter) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&#39;";
    default: return {};
  }
}

}  // namespace

std::string htmlText(std::string_view text) { return replaced(printable(text), entityOf); }

std::string jsonInScript(std::string_view json) {
  return replaced(json, [](char letter) {
    return letter == '<' ? std::string_view("\\u003c") : std::string_view();
  });
}

}  // namespace marrowbench::ctl
