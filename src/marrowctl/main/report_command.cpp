#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include "marrowctl/main/commands.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/read_tables.h"
#include "marrowctl/main/table_options.h"
#include "marrowctl/report/link_speed.h"
#include "marrowctl/report/make_report.h"
#include "marrowctl/report/output.h"
#include "marrowctl/report/page/page.h"
#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {
namespace {

std::string problemOfFolder(const std::string& folder) {
  std::error_code code;
  if (std::filesystem::is_directory(folder, code)) return {};
  return folder + ": " + std::strerror(code ? code.value() : ENOTDIR);
}

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
  ReadOutcome read = readTables("report", std::move(reading));
  if (!read.problem.empty()) return impossible("report", read.problem);
  options.hosts = source.hosts;
  options.clients = command.clients;
  options.doneFolder = command.doneFolder;
  return delivered(makeReport(std::move(read.set), options), command);
}

}  // namespace marrowbench::ctl
