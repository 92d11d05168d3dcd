#include "marrowctl/plan/file_sizes.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "marrowctl/plan/one_spelling.h"
#include "marrowctl/plan/path_pattern.h"

namespace marrowbench::ctl {
namespace {

// So many files are looked at one by one; the size of the last one stands for those behind it.
constexpr std::int64_t kLookedAt = 1000;
// Behind so many that are not known no others are expected.
constexpr int kMostMissing = 3;

bool isMarked(std::string_view path) { return path.find(kIterationMark) != std::string_view::npos; }

void append(std::vector<SizedFiles>& files, std::int64_t count, std::int64_t size) {
  if (count <= 0) return;
  if (!files.empty() && files.back().size == size) {
    files.back().count += count;
  } else {
    files.push_back({count, size});
  }
}

std::int64_t countOf(const std::vector<SizedFiles>& files) {
  std::int64_t count = 0;
  for (const SizedFiles& part : files) count += part.count;
  return count;
}

// What stands behind the first `skipped` files, at most `count` of them.
void appendPart(std::vector<SizedFiles>& result, const std::vector<SizedFiles>& files,
                std::int64_t skipped, std::int64_t count) {
  for (const SizedFiles& part : files) {
    const std::int64_t passed = std::min(skipped, part.count);
    skipped -= passed;
    const std::int64_t taken = std::min(part.count - passed, count);
    count -= taken;
    append(result, taken, part.size);
  }
}

std::int64_t sizeAt(const std::vector<SizedFiles>& files, std::int64_t iteration) {
  for (const SizedFiles& part : files) {
    if (iteration < part.count) return part.size;
    iteration -= part.count;
  }
  return kUnknownSize;
}

void replaceAt(std::vector<SizedFiles>& files, std::int64_t iteration, const SizedFiles& file) {
  std::vector<SizedFiles> result;
  appendPart(result, files, 0, iteration);
  append(result, 1, file.size);
  appendPart(result, files, iteration + 1, countOf(files));
  files = std::move(result);
}

// What is not known stays unknown.
std::int64_t largerOf(std::int64_t size, std::int64_t old) {
  return size == kUnknownSize ? kUnknownSize : std::max(size, old);
}

// Of files that are written one after the other by the same name.
SizedFiles lastOf(const std::vector<SizedFiles>& files, bool keepsEnd) {
  SizedFiles last{1, files.back().size};
  for (auto part = files.rbegin(); keepsEnd && part != files.rend(); ++part) {
    last.size = part->size == kUnknownSize ? kUnknownSize : largerOf(last.size, part->size);
  }
  return last;
}

// File by file; both have as many.
std::vector<SizedFiles> largerOf(const std::vector<SizedFiles>& files,
                                 const std::vector<SizedFiles>& old) {
  std::vector<SizedFiles> result;
  std::size_t next = 0;
  std::int64_t taken = 0;  // of old[next]
  for (SizedFiles part : files) {
    while (part.count > 0) {
      const std::int64_t count = std::min(part.count, old[next].count - taken);
      append(result, count, largerOf(part.size, old[next].size));
      part.count -= count;
      taken += count;
      if (taken < old[next].count) continue;
      ++next;
      taken = 0;
    }
  }
  return result;
}

std::size_t digitsAt(std::string_view path, std::size_t position) {
  return std::min(path.find_first_not_of("0123456789", position), path.size()) - position;
}

}  // namespace

void FileSizes::write(const std::string& path, std::vector<SizedFiles> files, Writing how) {
  const std::string name = oneSpelling(path);
  if (!isMarked(name)) files = {lastOf(files, how.keepsEnd)};
  if (how.keepsEnd && mayExist(name)) files = largerOf(files, sizesNamed(name, countOf(files)));
  if (const auto member = membershipOf(name)) {
    return replaceAt(written.at(member->family).files, member->iteration, files.front());
  }
  FileFamily& family = written[name];
  if (family.path.empty()) family.path = path;
  family.isPerHost = how.isPerHost;
  hasSingles = hasSingles || !isMarked(name);
  if (isMarked(name)) {
    hasMarks = true;
    appendPart(files, family.files, countOf(files), countOf(family.files));
  }
  family.files = std::move(files);
}

std::vector<SizedFiles> FileSizes::sizesOf(const std::string& path, std::int64_t iterations) {
  return sizesNamed(oneSpelling(path), iterations);
}

std::vector<SizedFiles> FileSizes::sizesNamed(const std::string& name, std::int64_t iterations) {
  std::vector<SizedFiles> files;
  if (!isMarked(name)) {
    append(files, iterations, sizeOf(name));
    return files;
  }
  if (const auto known = written.find(name); known != written.end()) {
    appendPart(files, known->second.files, 0, iterations);
  }
  std::int64_t next = countOf(files);
  int missing = 0;
  for (std::int64_t looked = 0; next < iterations && looked < kLookedAt; ++looked, ++next) {
    const std::int64_t size = sizeOf(filledIn(name, {{}, std::to_string(next), {}}));
    append(files, 1, size);
    if (size == kUnknownSize && ++missing == kMostMissing) looked = kLookedAt;
  }
  if (next < iterations) append(files, iterations - next, files.back().size);
  return files;
}

// A fleet writes tens of thousands of families, and most of them are new.
bool FileSizes::mayExist(const std::string& name) {
  return !isMarked(name) || hasSingles || written.contains(name) ||
         sizeHere(filledIn(name, {{}, "0", {}})) != kUnknownSize;
}

std::int64_t FileSizes::sizeOf(const std::string& name) {
  if (const auto member = membershipOf(name)) {
    return sizeAt(written.at(member->family).files, member->iteration);
  }
  const auto known = written.find(name);
  return known == written.end() ? sizeHere(name) : known->second.files.back().size;
}

// A number in the path may be that of an iteration.
std::optional<FileSizes::Membership> FileSizes::membershipOf(const std::string& name) const {
  if (!hasMarks || isMarked(name)) return std::nullopt;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const std::size_t digits = digitsAt(name, i);
    if (digits == 0) continue;
    Membership member{name, 0};
    member.family.replace(i, digits, 1, kIterationMark);
    const char* first = name.data() + i;
    const bool isNumber =
        std::from_chars(first, first + digits, member.iteration).ec == std::errc() &&
        (digits == 1 || *first != '0');
    const auto family = isNumber ? written.find(member.family) : written.end();
    if (family != written.end() && member.iteration < countOf(family->second.files)) return member;
    i += digits;
  }
  return std::nullopt;
}

}  // namespace marrowbench::ctl
