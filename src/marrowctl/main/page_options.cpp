#include "marrowctl/main/page_options.h"

#include <utility>

#include "marrowctl/report/page/page_document.h"
#include "marrowctl/support/new_files.h"

namespace marrowbench::ctl {

void addPageOptions(OptionSet& options, PageOptions& values) {
  options.text("--html", values.file, "FILE", "Write a page with charts, besides");
  options.flag("--force", values.overwrites, "Overwrite the page where it exists");
}

std::optional<Outcome> refusedPage(const std::string& subcommand, const PageOptions& values) {
  if (values.file.empty()) return std::nullopt;
  if (!canMakePages()) {
    return impossible(subcommand,
                      "--html: this program was built without the library of its charts "
                      "(MARROWBENCH_CHARTS)");
  }
  const std::string problem = problemWith({{values.file, ""}}, values.overwrites);
  if (!problem.empty()) return impossible(subcommand, problem);
  return std::nullopt;
}

Outcome withPage(const std::string& subcommand, const PageOptions& values, std::string page,
                 const std::function<Outcome()>& answer) {
  const std::string problem = writeNewFiles({{values.file, std::move(page)}}, values.overwrites);
  if (!problem.empty()) return impossible(subcommand, problem);
  Outcome outcome = answer();
  outcome.messages += "marrowctl " + subcommand + ": written: " + values.file + "\n";
  return outcome;
}

}  // namespace marrowbench::ctl
