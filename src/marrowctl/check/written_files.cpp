#include "marrowctl/check/written_files.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace marrowbench::ctl {
namespace {

// Numbers of iterations have at most ten digits.
constexpr std::size_t kMostDigits = 10;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The number of an iteration, as it is written: without leading zeros.
std::optional<std::int32_t> iterationOf(std::string_view digits) {
  if (digits.size() > 1 && digits.front() == '0') return std::nullopt;
  std::int32_t number = 0;
  const auto [stop, code] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return code == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<std::size_t> WrittenFiles::add(const SurveyedTest& test) {
  const std::int32_t iterations = test.test().iterations;
  if (test.dest().has(kIterationMark)) hasNumberedNames = true;
  const auto [family, isNew] =
      families.try_emplace(test.dest().name, Family{{&test, Writer::kEveryHost, iterations}, {}});
  // The names of a pattern are entered once; a later test may have more iterations.
  if (isNew || iterations > family->second.writer.iterations) {
    family->second.writer.iterations = std::max(iterations, family->second.writer.iterations);
    const auto shared = addNames(test);
    if (isNew) family->second.sharedHost = shared;
  }
  return family->second.sharedHost;
}

std::optional<std::size_t> WrittenFiles::addNames(const SurveyedTest& test) {
  const bool isNamed = test.dest().has(kHostMark);
  std::optional<std::size_t> sharedHost;
  if (!isNamed && survey.plan.isForManyClients()) sharedHost = 0;
  for (std::size_t i = 0; i < survey.hostsToAsk(test.dest()); ++i) {
    const std::size_t host = isNamed ? i : Writer::kEveryHost;
    const auto [place, isNew] =
        names.try_emplace(isNamed ? survey.nameForHost(test.dest(), i) : test.dest().name,
                          Writer{&test, host, test.test().iterations});
    if (isNew) {
      unlike.push_back(&place->first);
      continue;
    }
    Writer& known = place->second;
    known.iterations = std::max(known.iterations, test.test().iterations);
    const bool isOthers = known.host != host && survey.plan.isForManyClients();
    if (isOthers && !sharedHost) sharedHost = i;
  }
  return sharedHost;
}

WrittenFiles::Sought WrittenFiles::seek(const PathPattern& pattern, std::size_t host,
                                        std::int32_t iterations) {
  Sought sought;
  sought.isNumbered = pattern.has(kIterationMark);
  if (const auto family = families.find(pattern.name); family != families.end()) {
    sought.family = family->second.writer;
    if (!sought.isNumbered || iterations <= sought.family->iterations) return sought;
  }
  sought.name = survey.nameForHost(pattern, host);
  if (const auto named = names.find(sought.name); named != names.end()) {
    sought.named = named->second;
  }
  sought.mayBeOthers = sought.isNumbered ? mayMeet(sought.name) : hasNumberedNames;
  return sought;
}

// Most names are never asked for by others.
bool WrittenFiles::mayMeet(const std::string& name) {
  for (const std::string* const written : unlike) lookalikes.add(*written);
  unlike.clear();
  return lookalikes.mayMeet(name);
}

std::optional<Writer> WrittenFiles::writerOf(const Sought& sought, std::int32_t iteration) const {
  for (const auto& writer : {sought.family, sought.named}) {
    if (writer && (!sought.isNumbered || iteration < writer->iterations)) return writer;
  }
  if (!sought.mayBeOthers) return std::nullopt;
  const std::string literal = filledIn(sought.name, {{}, std::to_string(iteration), {}});
  if (auto writer = byName(literal, iteration)) return writer;
  return hasNumberedNames ? byNumber(literal) : std::nullopt;
}

std::optional<Writer> WrittenFiles::byName(const std::string& name, std::int32_t iteration) const {
  const auto writer = names.find(name);
  if (writer == names.end()) return std::nullopt;
  const bool isNumbered = name.find(kIterationMark) != std::string::npos;
  if (isNumbered && iteration >= writer->second.iterations) return std::nullopt;
  return writer->second;
}

// "data_3.bin" may be an iteration of "data_[iter].bin": every run of digits is tried as its
// number.
std::optional<Writer> WrittenFiles::byNumber(const std::string& name) const {
  for (std::size_t begin = 0; begin < name.size(); ++begin) {
    for (std::size_t length = 1; length <= kMostDigits && begin + length <= name.size() &&
                                 isDigit(name[begin + length - 1]);
         ++length) {
      const auto iteration = iterationOf(std::string_view(name).substr(begin, length));
      if (!iteration) continue;
      std::string numbered = name;
      numbered.replace(begin, length, 1, kIterationMark);
      if (auto writer = byName(numbered, *iteration)) return writer;
    }
  }
  return std::nullopt;
}

}  // namespace marrowbench::ctl
