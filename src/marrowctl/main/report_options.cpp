#include "marrowctl/main/option_set.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/table_options.h"

namespace marrowbench::ctl {

Command readReport(const Subcommand& self, Arguments arguments) {
  ReportCommand report;
  bool isJson = false, isTidy = false;
  OptionSet options(self, " TABLE...");
  addTableOptions(options, report.from);
  options.number("--clients", report.clients, 1, kMostClients, "N",
                 "How many clients there should be");
  options.text("--done", report.doneFolder, "FOLDER", "Where the done markers are: _NAME_log");
  options.text("--link", report.link, "SPEED",
               "Of each client's link, as 10G: faster rows are doubtful");
  addPageOptions(options, report.page);
  options.flag("--json", isJson, "One JSON document");
  options.flag("--tidy", isTidy, "A clean table: one row for each iteration, as CSV");
  options.exclude("--tidy", "--json");
  options.footer(
      "A TABLE may be a folder of *.csv files, a pattern, or - for the standard input.\n\n"
      "Example: did these 20 clients finish, and how fast were they together?\n"
      "  marrowctl report results.csv --settings many_clients.bst --hosts 'c[01-20]'\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  report.tables = options.words;
  takeSettings(report.tables, report.from);
  if (report.tables.empty()) return options.wrong("name a results table");
  if (isJson) report.format = ReportFormat::json;
  if (isTidy) report.format = ReportFormat::tidy;
  return report;
}

}  // namespace marrowbench::ctl
