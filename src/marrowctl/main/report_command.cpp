#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include "marrowctl/main/commands.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/table_options.h"
#include "marrowctl/report/link_speed.h"
#include "marrowctl/report/make_report.h"
#include "marrowctl/report/output.h"
#include "marrowctl/report/page/page.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

std::string problemOfFolder(const std::string& folder) {
  std::error_code code;
  if (std::filesystem::is_directory(folder, code)) return {};
  return folder + ": " + std::strerror(code ? code.value() : ENOTDIR);
}

// What is read of what there is, in a line that is drawn anew.
class ReadingLine {
 public:
  ReadingLine() : isShown(isTerminal(stderr)) {}
  ReadingLine(const ReadingLine&) = delete;
  ReadingLine& operator=(const ReadingLine&) = delete;
  ~ReadingLine() {
    if (shownBytes > 0) (void)std::fputs("\r\033[K", stderr);
  }

  void show(std::uint64_t done, std::uint64_t all) {
    if (!isShown || done - shownBytes < kStep) return;
    shownBytes = done;
    (void)std::fprintf(stderr, "\rReading: %s of %s MiB\033[K",
                       shownCount(static_cast<std::int64_t>(done / kMib)).c_str(),
                       shownCount(static_cast<std::int64_t>(all / kMib)).c_str());
  }

 private:
  static constexpr std::uint64_t kMib = 1 << 20;
  // What is read sooner needs no line.
  static constexpr std::uint64_t kStep = 64 * kMib;
  const bool isShown;
  std::uint64_t shownBytes = 0;
};

Outcome printTidy(const Report& report, int status) {
  const bool isWritten = writeTidy(report, [](std::string_view text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  });
  if (isWritten) return {status, "", ""};
  return impossible("", std::string("the standard output: ") + std::strerror(errno));
}

Outcome printed(const Report& report, ReportFormat format) {
  const int status = exitStatusOf(report);
  switch (format) {
    case ReportFormat::tidy: return printTidy(report, status);
    case ReportFormat::json: return {status, reportJson(report), ""};
    case ReportFormat::text: break;
  }
  return {status, reportText(report, styleOf(stdout)), ""};
}

// Prints the report, and writes its page where one is asked for.
Outcome delivered(const Report& report, const ReportCommand& command) {
  if (command.page.file.empty()) return printed(report, command.format);
  return withPage("report", command.page, pageOf(report, kPageMaker),
                  [&] { return printed(report, command.format); });
}

}  // namespace

Outcome runReport(const ReportCommand& command) {
  ReportOptions options;
  if (!command.link.empty()) {
    options.linkBytesPerSecond = linkSpeedFrom(command.link);
    if (!options.linkBytesPerSecond)
      return wrongUsageOf("report", "--link: " + command.link + " is no speed such as 10G or 100M");
  }
  if (!command.doneFolder.empty()) {
    const std::string problem = problemOfFolder(command.doneFolder);
    if (!problem.empty()) return impossible("report", problem);
  }
  if (const auto outcome = refusedPage("report", command.page)) return *outcome;
  TableSource source;
  if (const auto outcome = prepareSource("report", command.from, source)) return *outcome;
  ReadOptions reading = readOptionsOf(command.from, source, command.tables);
  ReadingLine line;
  reading.progress = [&line](std::uint64_t done, std::uint64_t all) { line.show(done, all); };
  ReadOutcome read = readResults(reading);
  if (!read.problem.empty()) return impossible("report", read.problem);
  options.hosts = source.hosts;
  options.clients = command.clients;
  options.doneFolder = command.doneFolder;
  return delivered(makeReport(std::move(read.set), options), command);
}

}  // namespace marrowbench::ctl
