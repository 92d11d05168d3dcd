#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <variant>

#include "marrowctl/main/command_line.h"
#include "marrowctl/main/commands.h"

namespace marrowbench::ctl {
namespace {

Outcome run(const Command& command, const std::string& ownPath) {
  if (const auto* const check = std::get_if<CheckCommand>(&command)) return runCheck(*check);
  if (const auto* const sweep = std::get_if<SweepCommand>(&command)) return runSweep(*sweep);
  if (const auto* const here = std::get_if<RunCommand>(&command)) return runRun(*here, ownPath);
  if (const auto* const report = std::get_if<ReportCommand>(&command)) return runReport(*report);
  if (const auto* const compare = std::get_if<CompareCommand>(&command))
    return runCompare(*compare);
  if (const auto* const fleet = std::get_if<FleetCommand>(&command)) return fleet->carryOut();
  return std::get<Outcome>(command);
}

bool write(const std::string& text, std::FILE* stream) {
  return std::fwrite(text.data(), 1, text.size(), stream) == text.size() &&
         std::fflush(stream) == 0;
}

int print(const Outcome& outcome) {
  const bool isWritten = write(outcome.output, stdout);
  const int code = errno;
  write(outcome.messages, stderr);
  if (isWritten) return outcome.status;
  // A verdict that nobody could read is none.
  std::fprintf(stderr, "marrowctl: the standard output: %s\n", std::strerror(code));
  return notDone;
}

}  // namespace

static int runProgram(std::span<char* const> arguments) {
  if (arguments.empty()) return print(run(readCommandLine({}), ""));
  return print(run(readCommandLine(arguments.subspan(1)), arguments.front()));
}

}  // namespace marrowbench::ctl

int main(int argc, char** argv) {
  try {
    return marrowbench::ctl::runProgram({argv, static_cast<std::size_t>(argc)});
  } catch (const std::bad_alloc&) {
    std::fputs("marrowctl: out of memory\n", stderr);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "marrowctl: %s\n", problem.what());
  }
  return marrowbench::ctl::notDone;
}
