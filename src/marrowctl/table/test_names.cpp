#include "marrowctl/table/test_names.h"

#include <functional>
#include <map>
#include <unordered_map>

#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kKib = 1024;

std::string fileOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string shownPaths(const ResultTest& test, const std::function<std::string(std::string)>& of) {
  switch (test.parameters.type) {
    case TestType::write: return of(test.dest);
    case TestType::read: return of(test.source);
    case TestType::copy: return of(test.source) + " -> " + of(test.dest);
  }
  return "";
}

std::string lineOf(const ResultTest& test) {
  if (test.settingsLine == 0) return {};
  return fileOf(test.settingsFile) + " line " + std::to_string(test.settingsLine);
}

std::string filesOf(const ResultTest& test) { return shownPaths(test, fileOf); }

using Distinction = std::string (*)(const ResultTest&);

// Tests whose names are the same get what tells them apart, if it does.
void distinguish(std::vector<ResultTest>& tests, const std::vector<std::string>& plain,
                 Distinction distinction) {
  std::map<std::string, std::vector<std::size_t>> groups;
  for (std::size_t i = 0; i < tests.size(); ++i) groups[tests[i].name].push_back(i);
  for (const auto& [name, members] : groups) {
    if (members.size() < 2) continue;
    std::unordered_map<std::string, int> counts;
    for (const std::size_t i : members) ++counts[distinction(tests[i])];
    if (counts.size() < members.size()) continue;
    for (const std::size_t i : members) {
      tests[i].name = plain[i] + " (" + printable(distinction(tests[i])) + ")";
    }
  }
}

}  // namespace

std::string pathsOf(const ResultTest& test) {
  return shownPaths(test, [](std::string path) { return path; });
}

std::string nameOfTest(const Parameters& p) {
  std::string name = std::string(nameOf(p.method)) + " " + std::string(nameOf(p.type));
  name += p.chunkBytes > 0 ? ", " + shownSize(p.chunkBytes) + " chunks" : ", in one piece";
  // What is read or copied is as large as its source.
  if (p.fileKib > 0 && p.type == TestType::write)
    name += ", " + shownSize(p.fileKib * kKib) + " files";
  if (p.flush) name += ", flush";
  if (p.preallocate) name += ", preallocated";
  if (p.chunkWaitMs > 0) name += ", " + shownCount(p.chunkWaitMs) + " ms waits";
  const bool hasBuffer = p.method == Method::stream || p.method == Method::ansiC;
  if (hasBuffer && p.systemBuffer >= 0)
    name += p.systemBuffer == 0 ? ", unbuffered" : ", own buffer";
  if (p.cacheMode != 0) name += ", cache mode " + std::to_string(p.cacheMode);
  return name;
}

void nameTests(std::vector<ResultTest>& tests) {
  std::vector<std::string> plain;
  for (ResultTest& test : tests) {
    test.name = nameOfTest(test.parameters);
    plain.push_back(test.name);
  }
  for (const Distinction each : {Distinction{filesOf}, Distinction{pathsOf}, Distinction{lineOf}}) {
    distinguish(tests, plain, each);
  }
  std::unordered_map<std::string, int> seen;
  for (ResultTest& test : tests) {
    const int number = ++seen[test.name];
    if (number > 1) test.name += " #" + std::to_string(number);
  }
}

}  // namespace marrowbench::ctl
