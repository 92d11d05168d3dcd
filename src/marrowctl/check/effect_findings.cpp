#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "marrowctl/check/changes.h"
#include "marrowctl/check/finding_groups.h"

namespace marrowbench::ctl {
namespace {

// Descriptors have no buffer to flush, and a copy in one step flushes nothing.
bool flushes(const SurveyedTest& test) {
  const PlannedTest& t = test.test();
  const bool hasBuffer = t.method == Method::stream || t.method == Method::ansiC;
  const bool isInOneStep = t.type == TestType::copy && t.used.chunkSize <= 0;
  return hasBuffer && t.type != TestType::read && t.used.flush && !isInOneStep;
}

bool preallocates(const SurveyedTest& test) {
  const PlannedTest& t = test.test();
  return t.method == Method::posix && t.type != TestType::read && t.used.prealloc;
}

// Of a stream that writes and of all C stdio transfers the library's own buffer is used.
bool buffers(const SurveyedTest& test) {
  const PlannedTest& t = test.test();
  if (t.used.systemBuffer < 1) return false;
  if (t.method == Method::stream) return t.type != TestType::write;
  return t.method == Method::ansiC && t.type == TestType::copy;
}

void addNoEffect(const SurveyedTest& test, Field field, std::string_view what,
                 FindingList& findings) {
  findings.onField("no-effect", test, field,
                   {fmt::format("{} does nothing for a {} by {}", what, nameOf(test.test().type),
                                nameOf(test.test().method)),
                    "write 0"});
}

void addEffects(const SurveyedTest& test, FindingList& findings) {
  const ParameterBlock& written = test.test().asWritten;
  if (written.flush && !flushes(test)) addNoEffect(test, Field::flush, "Flush", findings);
  if (written.prealloc && !preallocates(test)) {
    addNoEffect(test, Field::preallocate, "PreAllocate", findings);
  }
  if (written.systemBuffer >= 1 && !buffers(test)) {
    addNoEffect(test, Field::systemBuffer, "a System Buffer of 1 and more", findings);
  }
}

void addMeasuresNothing(const SurveyedTest& test, FindingList& findings) {
  if (test.test().method == Method::system) {
    findings.onField("measures-nothing", test, Field::method,
                     {"System moves no data: its rows show zeros", "write Stream, AnsiC or Posix"});
  }
  if (test.test().iterations == 0) {
    findings.onField("measures-nothing", test, Field::iterations,
                     {"0 iterations: the test is not run and leaves no row",
                      "write 1 or more, or make the line a comment"});
  }
}

void addMemoryOnly(const SurveyedTest& test, FindingList& findings) {
  if (!test.movesData() || !test.source().isEmpty() || !test.dest().isEmpty()) return;
  findings.onField("memory-to-memory", test, Field::source,
                   {"source and dest are both memory: the test looks for a file without a name and "
                    "always fails",
                    "write the path of a file as source (a read) or as dest (a write)"});
}

void addDoneFlag(const SurveyedTest& test, FindingList& findings) {
  if (test.text(Field::markDone) != "1") return;
  findings.onField("done-flag-one", test, Field::markDone,
                   {R"("1" is no done flag: only "true" asks for the marker)", "write true"});
}

// A file without tests leaves its marker anyway.
void addNoDoneFlag(const Survey& survey, const PlannedFile& file, FindingList& findings) {
  const auto isRun = [](const PlannedLine& line) {
    return line.kind == LineKind::test && line.test.isRun;
  };
  const auto marks = [&isRun](const PlannedLine& line) {
    return isRun(line) && line.test.markDone;
  };
  if (std::none_of(file.lines.begin(), file.lines.end(), isRun)) return;
  if (std::any_of(file.lines.begin(), file.lines.end(), marks)) return;
  Finding& finding =
      findings.onFile("no-done-flag", file,
                      {"no line asks for the done marker: nothing shows when a client has "
                       "finished the file",
                       "write true as the last field of the last line"});
  if (survey.plan.isForManyClients()) finding.severity = Severity::warning;
}

}  // namespace

void addEffectFindings(const Survey& survey, FindingList& findings) {
  for (const PlannedFile& file : survey.plan.files) addNoDoneFlag(survey, file, findings);
  for (const SurveyedTest& test : survey.tests) {
    addEffects(test, findings);
    addMeasuresNothing(test, findings);
    addMemoryOnly(test, findings);
    addDoneFlag(test, findings);
  }
}

}  // namespace marrowbench::ctl
