#include "marrowctl/fleet/publication.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

#include "marrowctl/fleet/open_file.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/plan/one_spelling.h"
#include "marrowctl/plan/template_expander.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

// As much as is read of a file; none with settings that are used is as large.
constexpr std::size_t kLargest = 1'048'576;
constexpr const char* kStandardInput = "-";
constexpr std::array kNamePlaceholders = {"[cfgName]", "[cfgNameID]", "[cfgLogName]", "[cfgID]"};

std::string problemWith(const std::string& path, int code) {
  return printable(path) + ": " + std::strerror(code);
}

// Puts the files of one chain to their places, one after the other: only when one is there it shows
// where the next one is looked for.
class Stage {
 public:
  explicit Stage(const PublicationOptions& publicationOptions) : options(publicationOptions) {
    if (options.file == kStandardInput)
      standardInput.assign(std::istreambuf_iterator<char>(std::cin), {});
  }

  Publication prepare() {
    const Plan original = planOf(options.file, {});
    if (!take(options.file, settings())) return std::move(made);
    for (std::size_t i = 1; made.problem.empty(); ++i) {
      made.plan = planOf(settings(), made.texts);
      if (i >= made.plan.files.size()) break;
      takeNext(original, i);
    }
    if (made.problem.empty() && options.hasNext) addNextPhase();
    if (made.problem.empty()) compare(original);
    return std::move(made);
  }

 private:
  [[nodiscard]] std::string settings() const { return options.folder.settings(options.phase); }

  [[nodiscard]] Plan planOf(const std::string& path,
                            const std::map<std::string, std::string>& texts) const {
    std::istringstream input(standardInput);
    return makePlan({{path}, options.hosts, options.clients, texts}, input);
  }

  bool take(const std::string& from, const std::string& to) {
    if (from == kStandardInput) {
      made.texts[to] = standardInput;
      return true;
    }
    const OpenFile file(from, O_RDONLY);
    int code = file.isOpen() ? 0 : errno;
    if (code == 0) code = file.read(made.texts[to]);
    if (code == 0 && made.texts[to].size() >= kLargest) code = EFBIG;
    if (code != 0) made.problem = problemWith(from, code);
    return code == 0;
  }

  void takeNext(const Plan& original, std::size_t i) {
    const std::string& place = made.plan.files[i].path;
    if (!place.starts_with('/')) {
      made.problem = fmt::format(
          "{} chains to {}, which clients look for in the folder in which they were started: write "
          "[cfgPath]{}",
          printable(made.plan.files[i - 1].path), printable(place), printable(place));
      return;
    }
    const bool isKnown = i < original.files.size() && original.files[i].exists;
    if (!isKnown || made.texts.contains(place)) return;
    const std::string& source = original.files[i].path;
    // It lies where clients find it, too.
    if (oneSpelling(source) == oneSpelling(place)) return;
    if (oneSpelling(std::filesystem::path(place).parent_path().string()) !=
        oneSpelling(options.folder.path())) {
      made.problem = fmt::format(
          "{} chains to {}, which is not in the folder of the run: write "
          "[cfgPath] and a name in front of it",
          printable(made.plan.files[i - 1].path), printable(place));
      return;
    }
    (void)take(source, place);
  }

  // The clients wait for the file that the line names until it is published.
  void addNextPhase() {
    const PlannedFile& last = made.plan.files.back();
    const auto text = made.texts.find(last.path);
    if (!last.chain.empty() || text == made.texts.end()) {
      made.problem = fmt::format(
          "{}: a phase may not end in a chain to what is not a file beside it: the next phase "
          "could not follow",
          printable(options.file));
      return;
    }
    if (!text->second.empty() && !text->second.ends_with('\n')) text->second += '\n';
    const std::string next = options.folder.settings(options.phase + 1);
    text->second += "[cfgPath]" + next.substr(next.rfind('/') + 1) + "\n";
    made.plan = planOf(settings(), made.texts);
  }

  // Names of files stand in paths, by placeholders.
  void compare(const Plan& original) {
    std::set<std::string> told;
    for (std::size_t i = 0; i < original.files.size() && i < made.plan.files.size(); ++i) {
      const PlannedFile& before = original.files[i];
      const PlannedFile& after = made.plan.files[i];
      const TemplateExpander old(oneSpelling(before.path), before.settingsFileNumber);
      const TemplateExpander now(after.path, after.settingsFileNumber);
      for (const char* const name : kNamePlaceholders) {
        if (!isUsed(after, name)) continue;
        const std::string was(old.once(name, "", 0, 0).view());
        const std::string is(now.once(name, "", 0, 0).view());
        if (was == is) continue;
        const std::string sentence = fmt::format("{} is {} there, not {}", name, is, was);
        if (told.insert(sentence).second) made.differences.push_back(sentence);
      }
    }
  }

  static bool isUsed(const PlannedFile& file, const std::string& placeholder) {
    return std::any_of(file.lines.begin(), file.lines.end(), [&](const PlannedLine& line) {
      return line.kind == LineKind::test && holds(line.text, placeholder);
    });
  }

  const PublicationOptions& options;
  std::string standardInput;
  Publication made;
};

}  // namespace

Publication preparePublication(const PublicationOptions& options) {
  return Stage(options).prepare();
}

}  // namespace marrowbench::ctl
