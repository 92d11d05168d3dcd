#include "marrowctl/table/parameters.h"

#include <array>
#include <charconv>
#include <system_error>

#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kCells = 11;
using Cells = std::array<std::string_view, kCells>;

template <class Value>
struct Named {
  std::string_view text;
  Value value;
};

constexpr Named<Method> kMethods[] = {{"Posix", Method::posix},
                                      {"System", Method::system},
                                      {"Stream", Method::stream},
                                      {"AnsiC", Method::ansiC},
                                      {"WinApi", Method::winApi}};
constexpr Named<TestType> kTypes[] = {
    {"Copy", TestType::copy}, {"Read", TestType::read}, {"Write", TestType::write}};
constexpr Named<bool> kFlush[] = {{"", false}, {"flush", true}};
constexpr Named<bool> kPreallocate[] = {{"", false}, {"prealloc", true}};

std::string unknown(std::string_view cell, std::string_view text) {
  return std::string(cell) + " is unknown: \"" + printable(text.substr(0, 40)) + "\"";
}

// One cell after the other, as long as all is well.
class CellReader {
 public:
  CellReader(const Cells& rowCells, std::string& firstProblem)
      : cells(rowCells), problem(firstProblem) {}

  template <class Value, std::size_t Count>
  void word(std::string_view name, const Named<Value> (&known)[Count], Value& value) {
    const std::string_view text = cells.at(next++);
    for (const Named<Value>& each : known) {
      if (each.text != text) continue;
      value = each.value;
      return;
    }
    if (problem.empty()) problem = unknown(name, text);
  }

  void number(std::string_view name, std::int64_t& value) {
    const std::string_view text = cells.at(next++);
    const auto [stop, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = code == std::errc() && stop == text.data() + text.size();
    if (!isNumber && problem.empty()) problem = unknown(name, text);
  }

  void skip() { ++next; }

 private:
  const Cells& cells;
  std::string& problem;
  std::size_t next = 0;
};

}  // namespace

std::optional<Parameters> parametersOf(std::string_view text, char separator,
                                       std::string& problem) {
  Cells cells;
  for (std::string_view& cell : cells) {
    cell = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(cell.size() + 1, text.size()));
  }
  problem.clear();
  Parameters p;
  CellReader reader(cells, problem);
  reader.word("Method", kMethods, p.method);
  reader.word("Type", kTypes, p.type);
  reader.word("Flush", kFlush, p.flush);
  reader.word("PreAllocate", kPreallocate, p.preallocate);
  reader.number("Chunk Wait", p.chunkWaitMs);
  reader.number("Chunk Size", p.chunkBytes);
  reader.skip();
  reader.number("System Buffer", p.systemBuffer);
  reader.number("Filesize KiB", p.fileKib);
  reader.number("Iterations", p.iterations);
  reader.number("Empty SystemCache Mode", p.cacheMode);
  if (!problem.empty()) return std::nullopt;
  return p;
}

}  // namespace marrowbench::ctl
