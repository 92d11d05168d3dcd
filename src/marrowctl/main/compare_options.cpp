#include <charconv>
#include <system_error>

#include "marrowctl/main/option_set.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/table_options.h"

namespace marrowbench::ctl {
namespace {

// Whole percent and parts of one: "5", "2.5".
std::optional<double> percentFrom(const std::string& text) {
  if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos)
    return std::nullopt;
  std::size_t used = 0;
  try {
    const double percent = std::stod(text, &used);
    if (used == text.size() && percent <= 100) return percent;
  } catch (const std::exception&) {
    return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

Command readCompare(const Subcommand& self, Arguments arguments) {
  CompareCommand compare;
  std::string limit;
  OptionSet options(self, " OLD NEW");
  addTableOptions(options, compare.from);
  addPageOptions(options, compare.page);
  options.flag("--json", compare.isJson, "One JSON document");
  options.text("--fail-if-slower", limit, "PERCENT",
               "Exit status 3 if a test is surely slower, by more than this");
  options.footer(
      "OLD and NEW are each a table, a folder of *.csv files, a pattern, or - for the standard "
      "input.\n\n"
      "Example: did the new server software cost any speed?\n"
      "  marrowctl compare before.csv after.csv --fail-if-slower 5\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  std::vector<std::string> tables = options.words;
  takeSettings(tables, compare.from);
  if (tables.size() != 2) return options.wrong("name two tables: the old one and the new one");
  compare.oldTables = tables[0];
  compare.newTables = tables[1];
  if (limit.empty()) return compare;
  compare.failIfSlower = percentFrom(limit);
  if (!compare.failIfSlower)
    return options.wrong("--fail-if-slower: " + limit + " is no number from 0 to 100");
  return compare;
}

}  // namespace marrowbench::ctl
