#include <fmt/format.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/plan/one_spelling.h"
#include "paths/folders.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kShortest = 3;
// With its "/": where two levels are made, the folder above them is looked for without it.
constexpr std::size_t kShortestAboveTwo = kShortest + 1;

std::string textOf(const FixedString& folder) {
  return folder.isEmpty() ? "." : std::string(folder.view());
}

// What becomes of the folder of a file.
enum class Provision {
  there,
  refused,  // the client does not try to make it
  notMade   // it tries in vain, and goes on
};

// The folders that there will be when the tests before have made theirs.
class Foresight {
 public:
  /// As provideFolderOf() will do; what it will make is remembered.
  Provision provide(const FixedString& path) {
    const FixedString folder = parentFolder(path);
    if (exists(folder)) return Provision::there;
    const FixedString above = thirdParentFolder(path);
    if (!exists(above)) return Provision::refused;
    if (above.length() < kShortestAboveTwo && !exists(parentFolder(folder))) {
      return Provision::notMade;
    }
    remember(folder);
    return Provision::there;
  }

  /// In truth, be its text as short as it is.
  bool isThere(const FixedString& folder) {
    const auto [place, isNew] = known.try_emplace(std::string(folder.view()));
    Folder& seen = place->second;
    if (isNew) {
      std::error_code ignored;
      seen.name = oneSpelling(textOf(folder));
      seen.existsHere = std::filesystem::is_directory(textOf(folder), ignored);
    }
    return seen.existsHere || made.contains(seen.name);
  }

 private:
  struct Folder {
    std::string name;
    bool existsHere = false;
  };

  bool exists(const FixedString& folder) { return folder.length() >= kShortest && isThere(folder); }

  void remember(FixedString folder) {
    while (!exists(folder) && folder.length() >= kShortest) {
      made.insert(oneSpelling(textOf(folder)));
      folder = parentFolder(folder);
    }
  }

  std::unordered_map<std::string, Folder> known;  // by their text
  std::unordered_set<std::string> made;           // names of those that tests make
};

class FolderGroup {
 public:
  FolderGroup(const Survey& theSurvey, FindingList& theFindings)
      : survey(theSurvey), findings(theFindings) {}

  // In the order in which a client makes them.
  void add(const SurveyedTest& test) {
    if (!test.text(Field::log).empty()) {
      addComplaint(test, Field::log, test.log());
      (void)lackingFolder(test, test.log());
    }
    if (!test.isRepeated()) return;
    if (!test.dest().isEmpty()) addRefusal(test, Field::dest, test.dest());
    if (test.hasTable() && !addComplaint(test, Field::table, test.table())) {
      addRefusal(test, Field::table, test.table());
    }
  }

 private:
  // A folder that is not known is never made; what stands in it is written all the same.
  bool addComplaint(const SurveyedTest& test, Field field, const PathPattern& pattern) {
    const FixedString folder = parentFolder(std::string_view(survey.path(test, pattern, 0, 0)));
    if (folder.length() >= kShortest) return false;
    const bool isThere = foresight.isThere(folder);
    if (field == Field::table && !isThere) return false;
    findings.onField(
        "folder-complaint", test, field,
        {fmt::format("the folder's text is too short to be recognised as one: the client prints "
                     "\"ERROR: Folder does not exists\" and {}",
                     isThere ? "writes the file all the same"
                             : "writes nothing, as the folder does not exist here"),
         kLongerFolder});
    return true;
  }

  void addRefusal(const SurveyedTest& test, Field field, const PathPattern& pattern) {
    const Lack lack = lackingFolder(test, pattern);
    if (lack.path.empty()) return;
    Advice advice = refusalOf(std::string_view(lack.path));
    std::string effect = "no row is written";
    if (field == Field::dest) {
      effect = lack.how == Provision::refused ? "the test is not run" : "the test fails";
    }
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
    if (thirdParentFolder(path).length() < kShortestAboveTwo) {
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

  // A file without a folder; an empty path for none.
  struct Lack {
    std::string path;
    Provision how = Provision::there;
  };

  // The one of the first client that has such a file.
  Lack lackingFolder(const SurveyedTest& test, const PathPattern& pattern) {
    const std::string folderPattern(parentFolder(std::string_view(pattern.text)).view());
    if (provided.contains(folderPattern)) return {};
    const bool isNumbered = folderPattern.find(kIterationMark) != std::string::npos;
    const auto iterations =
        isNumbered ? iterationsToAsk(test, pattern) : std::vector<std::int32_t>{0};
    for (std::size_t host = 0; host < survey.hostsToAsk(pattern); ++host) {
      for (const std::int32_t iteration : iterations) {
        std::string path = survey.path(test, pattern, host, iteration);
        const Provision how = foresight.provide(std::string_view(path));
        if (how != Provision::there) return {std::move(path), how};
      }
    }
    // Another test may have more iterations.
    if (!isNumbered) provided.insert(folderPattern);
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
