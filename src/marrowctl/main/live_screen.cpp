#include "marrowctl/main/live_screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>

namespace marrowbench::ctl {
namespace {

constexpr int kUsualHeight = 24;
constexpr const char* kHideCursor = "\033[?25l";
constexpr char kShowCursor[] = "\033[?25h";
constexpr int kStops[] = {SIGTSTP, SIGQUIT};

// A handler reaches nothing but what is global.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
volatile std::sig_atomic_t terminalOfHandler = -1;
volatile std::sig_atomic_t wasStopped = 0;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

extern "C" void showCursorAndStop(int number) {
  if (terminalOfHandler >= 0) (void)!write(terminalOfHandler, kShowCursor, sizeof kShowCursor - 1);
  wasStopped = 1;
  // What the signal does otherwise takes effect as soon as this one returns.
  (void)std::signal(number, SIG_DFL);
  (void)raise(number);
}

// Anew at each drawing: a program that was stopped and goes on has lost it.
void catchStops() {
  for (const int number : kStops) {
    struct sigaction action {};
    (void)sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = showCursorAndStop;
    (void)sigemptyset(&action.sa_mask);
    (void)sigaction(number, &action, nullptr);
  }
}

}  // namespace

LiveScreen::LiveScreen(std::FILE* terminal) : out(terminal) { terminalOfHandler = fileno(out); }

LiveScreen::~LiveScreen() {
  (void)std::fputs(kShowCursor, out);
  (void)std::fflush(out);
  for (const int number : kStops) {
    struct sigaction action {};
    (void)sigaction(number, nullptr, &action);
    if (action.sa_handler == showCursorAndStop) (void)std::signal(number, SIG_DFL);
  }
  terminalOfHandler = -1;
}

TextStyle LiveScreen::style() const {
  TextStyle style = styleOf(out);
  style.width = widthOf(out);
  return style;
}

int LiveScreen::height() const {
  struct winsize size {};
  const bool isKnown = ioctl(fileno(out), TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
  return isKnown ? static_cast<int>(size.ws_row) : kUsualHeight;
}

void LiveScreen::draw(const std::vector<std::string>& lines) {
  catchStops();
  // The cursor stands somewhere else then: lines that were wider take two, shells print messages.
  const int width = widthOf(out);
  if (wasStopped != 0 || width < drawnWidth) drawn = 0;
  wasStopped = 0;
  drawnWidth = width;
  std::string text = kHideCursor;
  if (drawn > 0) text += "\r\033[" + std::to_string(drawn) + "A";
  // Erased before and not behind: many a terminal takes the last column for the place behind it.
  for (const std::string& line : lines) text += "\033[K" + line + "\n";
  // What is left of a longer table.
  text += "\033[J";
  drawn = lines.size();
  (void)std::fwrite(text.data(), 1, text.size(), out);
  (void)std::fflush(out);
}

}  // namespace marrowbench::ctl
