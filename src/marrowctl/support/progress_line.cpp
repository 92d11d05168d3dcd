#include "marrowctl/support/progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <string_view>
#include <utility>

#include "marrowctl/support/terminal.h"
#include "marrowctl/support/utf8.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kRedrawMs = 200;
constexpr std::int64_t kPlainMs = 30000;
// To the front of the line, and away with what stands there.
constexpr std::string_view kErase = "\r\033[K";

constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// Whose line is to be taken away. A handler reaches nothing but what is global.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
volatile std::sig_atomic_t terminal = -1;

// What would end the program does so, but behind the line.
extern "C" void eraseAndEnd(int number) {
  [[maybe_unused]] const ssize_t written = write(terminal, kErase.data(), kErase.size());
  (void)std::signal(number, SIG_DFL);
  (void)std::raise(number);
}

// Changes what signals do that do it; others are somebody else's.
void exchange(void (*from)(int), void (*to)(int)) {
  for (const int number : kEndingSignals) {
    struct sigaction action {};
    (void)sigaction(number, nullptr, &action);
    if (action.sa_handler == from) (void)std::signal(number, to);
  }
}

std::int64_t now() {
  std::int64_t milliseconds = 0;
  nowMs(milliseconds);
  return milliseconds;
}

// As many characters as fit.
std::string_view cut(std::string_view text, std::size_t columns) {
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < columns && bytes < text.size(); ++i)
    bytes += std::max<std::size_t>(1, characterLength(text.substr(bytes)));
  return text.substr(0, bytes);
}

}  // namespace

ProgressLine::ProgressLine(std::string lineFront, std::int64_t quiet, std::FILE* output)
    : front(std::move(lineFront)),
      quietMs(quiet),
      out(output),
      isOnTerminal(canRedraw(output)),
      madeAt(now()) {}

std::int64_t ProgressLine::age() const { return now() - madeAt; }

bool ProgressLine::isDue() const {
  if (!shownAt) return age() >= quietMs;
  const std::int64_t since = now() - *shownAt;
  // A clock that was set back.
  return since < 0 || since >= (isOnTerminal ? kRedrawMs : kPlainMs);
}

void ProgressLine::show(const std::string& text) {
  shownAt = now();
  if (!isOnTerminal) {
    (void)std::fprintf(out, "%s%s\n", front.c_str(), text.c_str());
    (void)std::fflush(out);
    return;
  }
  if (!isVisible) {
    terminal = fileno(out);
    exchange(SIG_DFL, eraseAndEnd);
    isVisible = true;
  }
  // One column stays free: in the last one some terminals begin the next line.
  const auto columns = static_cast<std::size_t>(widthOf(out) - 1);
  (void)std::fputs(std::string(kErase).append(cut(text, columns)).c_str(), out);
  (void)std::fflush(out);
}

void ProgressLine::clear() {
  if (!isVisible) return;
  isVisible = false;
  (void)std::fputs(kErase.data(), out);
  (void)std::fflush(out);
  exchange(eraseAndEnd, SIG_DFL);
}

std::optional<std::int64_t> secondsLeft(std::int64_t elapsedMs, double done, double all) {
  constexpr std::int64_t kTooEarlyMs = 1000;
  if (elapsedMs < kTooEarlyMs || done <= 0 || all < done) return std::nullopt;
  return std::llround(static_cast<double>(elapsedMs) / 1000 * (all - done) / done);
}

}  // namespace marrowbench::ctl
