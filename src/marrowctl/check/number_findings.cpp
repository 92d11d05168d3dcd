#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

// As many characters of a number are converted.
constexpr std::size_t kConverted = 249;
constexpr std::int64_t kKib = 1024;
constexpr std::int64_t kMostKib = kMaxFileSize / kKib;

// What the field says, before it is put into 32 bits.
std::int64_t writtenIn(const SurveyedTest& test, Field field) {
  return std::strtoll(test.text(field).substr(0, kConverted).c_str(), nullptr, 10);
}

bool fits32(std::int64_t number) { return number >= INT32_MIN && number <= INT32_MAX; }

std::string_view nameOf(Field field) {
  switch (field) {
    case Field::chunkWait: return "the wait";
    case Field::chunkSize: return "the chunk size";
    case Field::systemBuffer: return "the system buffer";
    case Field::fileSize: return "the file size";
    case Field::iterations: return "the number of iterations";
    default: return "the cache mode";
  }
}

std::string shownUse(const SurveyedTest& test, Field field) {
  const ParameterBlock& p = test.test().asWritten;
  switch (field) {
    case Field::chunkWait: return fmt::format("{} ms", p.chunkWait);
    case Field::chunkSize: return shownSize(p.chunkSize);
    case Field::systemBuffer: return std::to_string(p.systemBuffer);
    case Field::fileSize: return shownSize(p.fileSize);
    case Field::iterations: return std::to_string(test.test().iterations);
    default: return std::to_string(p.emptyCacheMode);
  }
}

// Sizes are multiplied by 1,024, save for a file size that is cut before that.
bool wraps(const SurveyedTest& test, Field field) {
  const std::int64_t number = writtenIn(test, field);
  if (!fits32(number) || test.text(field).size() > kConverted) return true;
  if (field == Field::chunkSize) return !fits32(number * kKib);
  return field == Field::fileSize && number <= kMostKib && !fits32(number * kKib);
}

void addWraps(const SurveyedTest& test, Field field, FindingList& findings) {
  if (wraps(test, field)) {
    findings.onField(
        "number-wraps", test, field,
        {fmt::format("{} does not fit its 32 bits: {} is used", nameOf(field),
                     shownUse(test, field)),
         field == Field::chunkSize ? "write at most 2097151 (KiB)" : "write a smaller number"});
  } else if (field == Field::chunkWait && writtenIn(test, field) > UINT16_MAX) {
    findings.onField(
        "number-wraps", test, field,
        {fmt::format("the pause is made, but the speed percentage counts with {} ms: it has "
                     "16 bits for the wait",
                     test.test().asWritten.stats.waitMs),
         "write at most 65535 (ms)"});
  }
}

bool isWholeCopy(const SurveyedTest& test) {
  return test.test().type == TestType::copy && test.test().used.chunkSize < 0;
}

// Of 0, which is one step for all other tests.
bool takesDefault(const SurveyedTest& test) {
  return test.test().type == TestType::copy && test.test().method != Method::stream;
}

void addNegative(const SurveyedTest& test, Field field, FindingList& findings) {
  if (writtenIn(test, field) >= 0) return;
  const bool isStreamCopy =
      field == Field::chunkSize && test.test().method == Method::stream && isWholeCopy(test);
  std::string effect = "nothing is that small";
  if (field == Field::chunkWait) effect = "there is no pause";
  if (field == Field::chunkSize) effect = "the file is moved in one step";
  if (field == Field::iterations) effect = "the test is not run";
  std::string_view remedy = "write 0 or more";
  if (field == Field::chunkSize) {
    remedy = takesDefault(test) ? "write the KiB of a chunk; 0 is 1024 for this copy"
                                : "write 0 for one step, or the KiB of a chunk";
  }
  Finding& finding = findings.onField(
      "negative-size", test, field,
      {fmt::format("{} is negative: {}", nameOf(field), effect), std::string(remedy)});
  if (isStreamCopy) finding.severity = Severity::warning;
}

void addCapped(const SurveyedTest& test, FindingList& findings) {
  // By the low 32 bits, which is what is compared with the limit.
  const auto kib = static_cast<std::int32_t>(writtenIn(test, Field::fileSize));
  if (kib <= kMostKib) return;
  findings.onField("size-capped", test, Field::fileSize,
                   {fmt::format("a file of {} is cut to 1 GiB", shownSize(kib * kKib)),
                    "write at most 1048576 (KiB); more iterations move more"});
}

void addWholeCopy(const SurveyedTest& test, FindingList& findings) {
  const bool canNot = test.test().method == Method::ansiC || test.test().method == Method::posix;
  if (!canNot || !isWholeCopy(test)) return;
  findings.onField(
      "whole-copy-refused", test, Field::chunkSize,
      {fmt::format("a chunk of {} asks for a copy in one step, which fails: only streams "
                   "can",
                   shownSize(test.test().used.chunkSize)),
       "write the KiB of a chunk, 1024 say, or the method Stream"});
}

}  // namespace

void addNumberFindings(const Survey& survey, FindingList& findings) {
  for (const SurveyedTest& test : survey.tests) {
    for (const Field field : {Field::chunkWait, Field::chunkSize, Field::systemBuffer,
                              Field::fileSize, Field::iterations, Field::cacheMode}) {
      addWraps(test, field, findings);
    }
    for (const Field field :
         {Field::chunkWait, Field::chunkSize, Field::fileSize, Field::iterations}) {
      addNegative(test, field, findings);
    }
    addCapped(test, findings);
    addWholeCopy(test, findings);
  }
}

}  // namespace marrowbench::ctl
