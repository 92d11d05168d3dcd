#include <fmt/format.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "marrowctl/check/finding_groups.h"
#include "paths/folders.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kShortest = 3;

// The folders that there will be when the tests before have made theirs.
class Foresight {
 public:
  /// As provideFolderOf() will answer; what it will make is remembered.
  bool provide(const FixedString& path) {
    const FixedString folder = parentFolder(path);
    if (exists(folder)) return true;
    if (!exists(thirdParentFolder(path))) return false;
    remember(folder);
    return true;
  }

 private:
  bool exists(const FixedString& folder) {
    if (folder.length() < kShortest) return false;
    const auto [place, isNew] = known.try_emplace(std::string(folder.view()), false);
    if (isNew) place->second = folderExists(folder);
    return place->second;
  }

  void remember(FixedString folder) {
    while (!exists(folder) && folder.length() >= kShortest) {
      known[std::string(folder.view())] = true;
      folder = parentFolder(folder);
    }
  }

  std::unordered_map<std::string, bool> known;
};

class FolderGroup {
 public:
  FolderGroup(const Survey& theSurvey, FindingList& theFindings)
      : survey(theSurvey), findings(theFindings) {}

  // In the order in which a client makes them.
  void add(const SurveyedTest& test) {
    if (!test.text(Field::log).empty()) {
      addComplaint(test, Field::log, test.log());
      (void)refusedFolder(test, test.log());
    }
    if (!test.isRepeated()) return;
    if (!test.dest().isEmpty()) addRefusal(test, Field::dest, test.dest());
    if (test.hasTable() && !addComplaint(test, Field::table, test.table())) {
      addRefusal(test, Field::table, test.table());
    }
  }

 private:
  bool addComplaint(const SurveyedTest& test, Field field, const PathPattern& pattern) {
    if (parentFolder(std::string_view(survey.path(test, pattern, 0, 0))).length() >= kShortest) {
      return false;
    }
    findings.onField("folder-complaint", test, field,
                     {"the folder's text is too short to be recognised as one: the client prints "
                      "\"ERROR: Folder does not exists\" and writes the file all the same",
                      kLongerFolder});
    return true;
  }

  void addRefusal(const SurveyedTest& test, Field field, const PathPattern& pattern) {
    const std::string path = refusedFolder(test, pattern);
    if (path.empty()) return;
    Advice advice = refusalOf(std::string_view(path));
    const std::string effect = field == Field::dest ? "the test is not run" : "no row is written";
    advice.message.insert(0, effect + ": ");
    findings.onField("folder-refused", test, field, std::move(advice));
  }

  // Why a client does not make the folder of a file.
  static Advice refusalOf(const FixedString& path) {
    const std::string folder = quoted(parentFolder(path));
    if (parentFolder(path).length() < kShortest) {
      return {fmt::format("the folder's text {} has fewer than three characters and counts as "
                          "missing",
                          folder),
              kLongerFolder};
    }
    if (thirdParentFolder(path).length() < kShortest) {
      return {fmt::format("{} is missing here, and a client makes no folder so near to the "
                          "beginning of a path",
                          folder),
              "name the settings file by its whole path, or make the folder beforehand"};
    }
    return {fmt::format("three or more levels of {} are missing here, and a client makes two at "
                        "most",
                        folder),
            "correct the path, or make the folder beforehand"};
  }

  // The path of the first client that is refused a folder, empty for none.
  std::string refusedFolder(const SurveyedTest& test, const PathPattern& pattern) {
    const std::string folderPattern(parentFolder(std::string_view(pattern.text)).view());
    if (provided.contains(folderPattern)) return {};
    for (std::size_t host = 0; host < survey.hostsToAsk(pattern); ++host) {
      std::string path = survey.path(test, pattern, host, 0);
      if (!foresight.provide(std::string_view(path))) return path;
    }
    provided.insert(folderPattern);
    return {};
  }

  static constexpr const char* kLongerFolder =
      "name the settings file by a path with a folder of three or more characters, or write such a "
      "path here";

  const Survey& survey;
  FindingList& findings;
  Foresight foresight;
  std::unordered_set<std::string> provided;  // patterns of folders that all clients will have
};

}  // namespace

void addFolderFindings(const Survey& survey, FindingList& findings) {
  FolderGroup group(survey, findings);
  for (const SurveyedTest& test : survey.tests) group.add(test);
}

}  // namespace marrowbench::ctl
