#include "marrowctl/support/progress_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "fakes/fake_clock.h"
#include "helpers/caught_signal.h"
#include "helpers/environment_variable.h"

namespace marrowbench::ctl {
namespace {

using test::EnvironmentVariable;
using test::fakeClock;

void pass(std::int64_t milliseconds) { fakeClock().now += milliseconds * 1000; }

// A terminal of so many columns, and what it gets.
class Terminal {
 public:
  explicit Terminal(unsigned short columns) : screen(posix_openpt(O_RDWR | O_NOCTTY)) {
    (void)grantpt(screen);
    (void)unlockpt(screen);
    out = std::fopen(ptsname(screen), "w");
    struct termios plain {};
    (void)tcgetattr(fileno(out), &plain);
    plain.c_oflag &= static_cast<tcflag_t>(~OPOST);
    (void)tcsetattr(fileno(out), TCSANOW, &plain);
    struct winsize size {};
    size.ws_col = columns;
    (void)ioctl(fileno(out), TIOCSWINSZ, &size);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    (void)std::fclose(out);
    (void)close(screen);
  }

  // What has come since the last call. It comes in its own time, so a mark is sent behind it.
  std::string shown() const {
    constexpr char kMark = '\x1e';
    (void)std::fputc(kMark, out);
    (void)std::fflush(out);
    std::string text;
    for (char byte = 0; read(screen, &byte, 1) == 1 && byte != kMark;) text += byte;
    return text;
  }

  std::FILE* out = nullptr;

 private:
  int screen;
};

TEST(ProgressLine, IsDrawnAnewInItsPlaceAndTakenAway) {
  const EnvironmentVariable term("TERM", "xterm");
  const Terminal terminal(80);
  {
    ProgressLine line("run: ", 0, terminal.out);
    ASSERT_TRUE(line.isDue());
    line.show("one");
    EXPECT_EQ(terminal.shown(), "\r\033[Kone");
    EXPECT_FALSE(line.isDue());
    pass(199);
    EXPECT_FALSE(line.isDue());
    pass(1);
    EXPECT_TRUE(line.isDue());
    line.show("two");
    EXPECT_EQ(terminal.shown(), "\r\033[Ktwo");
    line.clear();
    EXPECT_EQ(terminal.shown(), "\r\033[K");
    line.clear();
    EXPECT_EQ(terminal.shown(), "");
    line.show("three");
    (void)terminal.shown();
  }
  EXPECT_EQ(terminal.shown(), "\r\033[K");
}

TEST(ProgressLine, FitsTheTerminal) {
  const EnvironmentVariable term("TERM", "xterm");
  const Terminal terminal(12);
  ProgressLine line("run: ", 0, terminal.out);
  line.show("01234567890123456789");
  EXPECT_EQ(terminal.shown(), "\r\033[K01234567890") << "one column stays free";
  const std::string umlaut = "\xC3\xA4";
  std::string text;
  for (int i = 0; i < 20; ++i) text += umlaut;
  line.show(text);
  EXPECT_EQ(terminal.shown(), "\r\033[K" + text.substr(0, 2 * 11));
}

TEST(ProgressLine, IsAPlainLineNowAndThenElsewhere) {
  const EnvironmentVariable term("TERM", "dumb");
  const Terminal dumb(80);
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  std::FILE* const piped = fdopen(pipe[1], "w");
  {
    for (std::FILE* const out : {piped, dumb.out}) {
      ProgressLine line("run: ", 0, out);
      ASSERT_TRUE(line.isDue());
      line.show("one");
      pass(29999);
      EXPECT_FALSE(line.isDue());
      pass(1);
      EXPECT_TRUE(line.isDue());
      line.show("two");
    }
  }
  char text[100];
  const ssize_t got = read(pipe[0], text, sizeof text);
  EXPECT_EQ(std::string(text, static_cast<std::size_t>(std::max<ssize_t>(got, 0))),
            "run: one\nrun: two\n");
  EXPECT_EQ(dumb.shown(), "run: one\nrun: two\n");
  (void)std::fclose(piped);
  (void)close(pipe[0]);
}

TEST(ProgressLine, KeepsQuietAboutWhatIsDoneSoon) {
  ProgressLine line("run: ", 1000);
  EXPECT_FALSE(line.isDue());
  pass(999);
  EXPECT_FALSE(line.isDue());
  pass(1);
  EXPECT_TRUE(line.isDue());
  EXPECT_EQ(line.age(), 1000);
}

TEST(ProgressLine, GoesOnWhenTheClockIsSetBack) {
  const EnvironmentVariable term("TERM", "xterm");
  const Terminal terminal(80);
  ProgressLine line("", 0, terminal.out);
  line.show("one");
  pass(-3600000);
  EXPECT_TRUE(line.isDue());
}

using ProgressLineDeathTest = testing::Test;

TEST(ProgressLineDeathTest, IsTakenAwayBeforeASignalEndsTheProgram) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const EnvironmentVariable term("TERM", "xterm");
    const Terminal terminal(80);
    EXPECT_EXIT(
        {
          ProgressLine line("run: ", 0, terminal.out);
          line.show("one");
          (void)std::raise(signal);
        },
        testing::KilledBySignal(signal), "");
    EXPECT_EQ(terminal.shown(), "\r\033[Kone\r\033[K") << signal;
  }
}

TEST(ProgressLine, LeavesSignalsToWhoeverTakesThem) {
  const EnvironmentVariable term("TERM", "xterm");
  const Terminal terminal(80);
  const test::CaughtSignal caught(SIGTERM);
  {
    ProgressLine line("run: ", 0, terminal.out);
    line.show("one");
    (void)std::raise(SIGTERM);
    EXPECT_EQ(caught.count(), 1);
  }
  (void)std::raise(SIGTERM);
  EXPECT_EQ(caught.count(), 2);
}

TEST(SecondsLeft, GoesOnAsItDid) {
  EXPECT_EQ(secondsLeft(2000, 10, 50), 8);
  EXPECT_EQ(secondsLeft(2000, 50, 50), 0);
  EXPECT_EQ(secondsLeft(999, 10, 50), std::nullopt);
  EXPECT_EQ(secondsLeft(2000, 0, 50), std::nullopt);
  EXPECT_EQ(secondsLeft(2000, 51, 50), std::nullopt) << "it has grown meanwhile";
}

}  // namespace
}  // namespace marrowbench::ctl
