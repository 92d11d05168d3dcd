#include "marrowctl/plan/file_sizes.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "marrowctl/plan/path_pattern.h"

namespace marrowbench::ctl {
namespace {

// So many files are looked at one by one; the size of the last one stands for those behind it.
constexpr std::int64_t kLookedAt = 1000;

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

std::optional<std::int64_t> sizeAt(const FileFamily& family, std::int64_t iteration) {
  for (const SizedFiles& part : family.files) {
    if (iteration < part.count) return part.size;
    iteration -= part.count;
  }
  return std::nullopt;
}

std::size_t digitsAt(std::string_view path, std::size_t position) {
  return std::min(path.find_first_not_of("0123456789", position), path.size()) - position;
}

}  // namespace

void FileSizes::write(const std::string& path, const std::vector<SizedFiles>& files,
                      bool isPerHost) {
  FileFamily& family = written[path];
  family.isPerHost = isPerHost;
  if (!isMarked(path)) {
    family.files = {{1, files.back().size}};
    return;
  }
  hasMarks = true;
  std::vector<SizedFiles> merged = files;
  const std::int64_t count = countOf(files);
  appendPart(merged, family.files, count, countOf(family.files));
  family.files = std::move(merged);
}

std::vector<SizedFiles> FileSizes::sizesOf(const std::string& path, std::int64_t iterations) {
  std::vector<SizedFiles> files;
  if (!isMarked(path)) {
    append(files, iterations, sizeOf(path));
    return files;
  }
  if (const auto known = written.find(path); known != written.end()) {
    appendPart(files, known->second.files, 0, iterations);
  }
  std::int64_t next = countOf(files);
  for (std::int64_t looked = 0; next < iterations && looked < kLookedAt; ++looked, ++next) {
    const std::int64_t size = sizeOf(filledIn(path, {{}, std::to_string(next), {}}));
    if (size == kUnknownSize) {
      append(files, iterations - next, kUnknownSize);
      return files;
    }
    append(files, 1, size);
  }
  if (next < iterations) append(files, iterations - next, files.back().size);
  return files;
}

std::int64_t FileSizes::sizeOf(const std::string& path) {
  if (const auto known = written.find(path); known != written.end()) {
    return known->second.files.back().size;
  }
  if (const std::optional<std::int64_t> size = memberSize(path)) return *size;
  return sizeHere(path);
}

// A number in the path may be that of an iteration.
std::optional<std::int64_t> FileSizes::memberSize(const std::string& path) const {
  if (!hasMarks || isMarked(path)) return std::nullopt;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const std::size_t digits = digitsAt(path, i);
    if (digits == 0) continue;
    std::string marked = path;
    marked.replace(i, digits, 1, kIterationMark);
    std::int64_t iteration = 0;
    const char* first = path.data() + i;
    const bool isNumber = std::from_chars(first, first + digits, iteration).ec == std::errc() &&
                          (digits == 1 || *first != '0');
    const auto family = isNumber ? written.find(marked) : written.end();
    if (family != written.end()) return sizeAt(family->second, iteration);
    i += digits;
  }
  return std::nullopt;
}

}  // namespace marrowbench::ctl
