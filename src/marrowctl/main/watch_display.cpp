#include "marrowctl/main/watch_display.h"

#include "marrowctl/fleet/watch_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kLineSeconds = 10;

// What is worth a line at once. Clients get ready and done one after the other, thousands of them.
std::string changeOf(const RunState& state) {
  std::string text = state.trouble + (state.publishedMs ? "published" : "");
  for (const ClientState each : {ClientState::late, ClientState::missing})
    text += " " + std::to_string(state.count(each));
  return text + (isComplete(state) ? " complete" : "");
}

}  // namespace

WatchDisplay::WatchDisplay(std::FILE* file) : out(file), pace(kLineSeconds), lastChange("-") {
  if (canRedraw(out)) screen.emplace(out);
}

void WatchDisplay::show(const RunState& state, bool isLast) {
  if (screen) {
    // The cursor stands in the line behind the table.
    return screen->draw(watchTable(state, screen->style(), screen->height() - 1));
  }
  const std::string change = changeOf(state);
  const bool isDue = pace.isDue() || change != lastChange || isLast;
  if (!isDue) return;
  lastChange = change;
  (void)std::fputs((watchLine(state) + "\n").c_str(), out);
  (void)std::fflush(out);
}

}  // namespace marrowbench::ctl
