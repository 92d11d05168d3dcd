#include "marrowctl/report/page/page.h"

#include "marrowctl/report/page/page_document.h"
#include "marrowctl/report/page/page_sections.h"

namespace marrowbench::ctl {

std::string pageOf(const Report& report, std::string_view program) {
  const std::vector<ChartSection> sections = {
      timelineSection(report), throughputSection(report), interfaceSection(report),
      scalingSection(report),  throttlingSection(report), firstIterationSection(report),
      clientSection(report),   troubleSection(report)};
  std::string body = verdictHtml(report) + "<nav>\n" + linkHtml("tests", "Tests") +
                     linksHtml(sections) + "</nav>\n" + doubtsHtml(report) + testsHtml(report) +
                     stragglersHtml(report) + chartsHtml(sections);
  const std::string errors = errorsHtml(report);
  if (!errors.empty()) body += "<section>\n" + errors + "</section>\n";
  body += absencesHtml(sections);
  return documentOf({"Marrowbench: " + report.verdict.text, body, sections}, program);
}

}  // namespace marrowbench::ctl
