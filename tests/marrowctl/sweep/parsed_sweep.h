#ifndef MARROWBENCH_TESTS_MARROWCTL_SWEEP_PARSED_SWEEP_H
#define MARROWBENCH_TESTS_MARROWCTL_SWEEP_PARSED_SWEEP_H

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "marrowctl/sweep/sweep.h"
#include "settings/settings_lines.h"

namespace marrowbench::test {

/// What the program reads in a settings file.
struct ParsedFile {
  std::vector<TestConfig> tests;
  std::vector<ParameterBlock> asWritten;  ///< of the tests, before validation
  std::string chain;                      ///< path of the next file
  int rejected = 0, behindChain = 0;
};

inline void takeLine(const RawLine& line, const FixedString& path, ParsedFile& file) {
  TestConfig slot;
  const SettingsLine taken = takeSettingsLine(line, path, settingsFileNumberOf(path), slot);
  if (taken.kind == LineKind::nothing) return;
  if (!file.chain.empty()) ++file.behindChain;
  if (taken.kind == LineKind::rejected) ++file.rejected;
  if (taken.kind == LineKind::chain) file.chain = slot.sourceTemplate.view();
  if (taken.kind != LineKind::test) return;
  file.tests.push_back(slot);
  file.asWritten.push_back(taken.asWritten);
}

inline ParsedFile parsedFile(const ctl::SweepFile& file) {
  ParsedFile parsed;
  std::istringstream text(file.text);
  const FixedString path = file.name == "-" ? "stdin.bst" : file.name.c_str();
  for (RawLine line; readRawLine(text, line);) takeLine(line, path, parsed);
  return parsed;
}

/// The files by their path.
inline std::map<std::string, ParsedFile> parsedFiles(const ctl::SweepResult& sweep) {
  std::map<std::string, ParsedFile> files;
  for (const ctl::SweepFile& file : sweep.files) files[file.name] = parsedFile(file);
  return files;
}

/// All tests that the program runs when it is started with the first file.
inline std::vector<TestConfig> testsOf(const ctl::SweepResult& sweep) {
  std::vector<TestConfig> tests;
  if (sweep.files.empty()) return tests;
  const auto files = parsedFiles(sweep);
  for (auto at = files.find(sweep.files.front().name); at != files.end();) {
    tests.insert(tests.end(), at->second.tests.begin(), at->second.tests.end());
    at = at->second.chain.empty() ? files.end() : files.find(at->second.chain);
  }
  return tests;
}

}  // namespace marrowbench::test

#endif
