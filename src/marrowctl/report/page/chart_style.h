#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_CHART_STYLE_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_CHART_STYLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/report/report.h"
#include "marrowctl/support/json_text.h"

/// Names and colours that all charts share.
namespace marrowbench::ctl {

/// Tests that colours can tell apart.
inline constexpr std::size_t kMostColours = 8;

/// "streams (Stream)", "stdio (AnsiC)", "descriptors (Posix)", ...
[[nodiscard]] std::string interfaceOf(Method method);

/// What a chart tells apart by colour: tests, or interfaces where there are too many tests.
class ColourKey {
 public:
  /// @param shown  indices of the tests that the chart shows
  ColourKey(const Report& report, const std::vector<std::uint32_t>& shown);

  /// The group of a test, a number below names().size(). @pre the test is shown
  [[nodiscard]] std::size_t groupOf(std::uint32_t test) const { return groups[test]; }
  [[nodiscard]] const std::vector<std::string>& names() const { return labels; }
  [[nodiscard]] bool tellsTests() const { return isByTest; }

  /// Title of the legend.
  [[nodiscard]] std::string_view title() const { return isByTest ? "Test" : "Interface"; }

  /// A Vega-Lite color channel over a field with the names of the groups.
  [[nodiscard]] Json channel(std::string_view field) const;

 private:
  void add(std::uint32_t test, const std::string& label, std::string_view colour);

  bool isByTest;
  std::vector<std::size_t> groups;  // by test
  std::vector<std::string> labels, colours;
};

/// Indices of the tests that have rows that moved something.
[[nodiscard]] std::vector<std::uint32_t> testsThatMoved(const Report& report);

/// Colours of Okabe and Ito: they differ for all kinds of colour vision.
[[nodiscard]] std::string_view colourOf(Method method);

/// A Vega-Lite axis of times: the clock with 24 hours, dates where a day begins.
[[nodiscard]] Json timeAxis();

/// A Vega-Lite color channel over a field with the names of the three measured interfaces.
[[nodiscard]] Json interfaceChannel(std::string_view field);

/// Vega-Lite's config for every chart: the text takes the colour of the page.
[[nodiscard]] std::string_view chartConfig();

}  // namespace marrowbench::ctl

#endif
