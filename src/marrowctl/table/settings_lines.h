#ifndef MARROWBENCH_MARROWCTL_TABLE_SETTINGS_LINES_H
#define MARROWBENCH_MARROWCTL_TABLE_SETTINGS_LINES_H

#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/table/number_roles.h"
#include "marrowctl/table/path_template.h"
#include "marrowctl/table/result_set.h"
#include "marrowctl/table/sites.h"

namespace marrowbench::ctl {

/// What the rows of a test say about it.
[[nodiscard]] Parameters parametersOf(const PlannedTest& test);

/// True for a test line whose iterations each append a row to a table.
[[nodiscard]] bool writesRows(const PlannedLine& line);

/// Indices of lines that write rows.
using LineNumbers = std::vector<std::uint32_t>;

/// The lines of settings files that write rows, as tests, and where rows of theirs are.
class SettingsTests {
 public:
  explicit SettingsTests(const Plan& plan);

  /// In the order in which clients run them.
  [[nodiscard]] std::vector<ResultTest> tests() const;

  /// Sets the roles of the numbers of kinds whose first row a line fits.
  void setRoles(const RowStore& store, NumberRoles& roles) const;

  /// Finds the lines of each site, and sets its host where the line's templates tell it.
  ///
  /// @return for each site the lines that fit, in their order: several where rows of lines look the
  ///         same, of which those that write to a table of this name are meant, if there are any;
  ///         empty: none fits
  [[nodiscard]] std::vector<LineNumbers> matchSites(const ResultSet& set,
                                                    std::vector<Site>& sites) const;

  /// Leaves of the paths of sites with a line what its templates do not tell: the folder in front.
  ///
  /// @param linesOfSites  as matchSites() returns them
  void cutToFolders(const std::vector<LineNumbers>& linesOfSites, std::vector<Site>& sites) const;

 private:
  struct Line {
    ResultTest test;
    PathTemplate source, dest, table;
  };
  struct Fit {
    std::uint32_t line = kNone;
    TemplateMatch source, dest;
  };
  [[nodiscard]] Fit fit(const Parameters& parameters, const std::string& source,
                        const std::string& dest) const;
  [[nodiscard]] LineNumbers linesIn(const std::string& table, std::uint32_t first) const;
  [[nodiscard]] static std::string hostInTable(const Line& line, const std::string& table);

  std::vector<Line> lines;
  std::vector<std::uint32_t> alike;  // for each line the next one whose rows look the same
};

}  // namespace marrowbench::ctl

#endif
