#include "marrowctl/sweep/sweep_lines.h"

#include <algorithm>
#include <limits>

#include "marrowctl/sweep/data_names.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t indexOf(Axis axis) { return static_cast<std::size_t>(axis); }

// The next choice of all axes but the methods, the last one moving first.
bool advance(const Matrix& matrix, Choice& choice) {
  for (std::size_t axis = indexOf(Axis::method); axis-- > 0;) {
    if (++choice[axis] < matrix.axes[axis].size()) return true;
    choice[axis] = 0;
  }
  return false;
}

// A kind that has no value of an axis stands at the axis's first one only.
bool hasTests(const Matrix& matrix, TestType kind, const Choice& choice) {
  for (std::size_t axis = 0; axis < kAxisCount; ++axis) {
    if (choice[axis] != 0 && !matrix.extends(kind, static_cast<Axis>(axis))) return false;
  }
  return true;
}

SweepLine lineOf(const Matrix& matrix, TestType kind, const Choice& choice) {
  SweepLine line;
  line.kind = kind;
  line.method = static_cast<Method>(matrix.at(choice, Axis::method).number);
  line.chunkKib = matrix.at(choice, Axis::chunk).number;
  if (matrix.extends(kind, Axis::size)) line.sizeKib = matrix.at(choice, Axis::size).number;
  line.buffer = matrix.at(choice, Axis::buffer).number;
  line.waitMs = matrix.at(choice, Axis::wait).number;
  line.iterations = matrix.at(choice, Axis::iterations).number;
  line.flush = matrix.at(choice, Axis::flush).number != 0;
  line.prealloc = matrix.at(choice, Axis::prealloc).number != 0;
  if (kind != TestType::write) line.source = readPath(matrix, choice);
  if (kind != TestType::read) line.dest = writtenPath(matrix, kind, choice);
  line.log = matrix.at(choice, Axis::log).text;
  line.table = matrix.at(choice, Axis::table).text;
  return line;
}

// Written by Posix in the usual chunks, as nobody compares it.
SweepLine sourceLine(const Matrix& matrix, const Choice& choice) {
  SweepLine line;
  line.sizeKib = matrix.at(choice, Axis::size).number;
  line.chunkKib = std::min<std::int64_t>(line.sizeKib, 1024);
  line.iterations = matrix.at(choice, Axis::iterations).number;
  line.dest = extraSourcePath(matrix, choice);
  line.log = matrix.at(choice, Axis::log).text;
  line.table = matrix.at(choice, Axis::table).text;
  return line;
}

void addSources(const Matrix& matrix, std::vector<SweepLine>& lines) {
  Choice choice{};
  std::size_t& dest = choice[indexOf(Axis::dest)];
  std::size_t& iterations = choice[indexOf(Axis::iterations)];
  std::size_t& size = choice[indexOf(Axis::size)];
  for (dest = 0; dest < matrix.on(Axis::dest).size(); ++dest) {
    for (iterations = 0; iterations < matrix.on(Axis::iterations).size(); ++iterations) {
      for (size = 0; size < matrix.on(Axis::size).size(); ++size) {
        lines.push_back(sourceLine(matrix, choice));
      }
    }
  }
}

void addMethods(const Matrix& matrix, TestType kind, Choice choice, bool isForward,
                std::vector<SweepLine>& lines) {
  const std::size_t count = matrix.on(Axis::method).size();
  for (std::size_t i = 0; i < count; ++i) {
    choice[indexOf(Axis::method)] = isForward ? i : count - 1 - i;
    lines.push_back(lineOf(matrix, kind, choice));
  }
}

std::int64_t limitedProduct(std::int64_t a, std::int64_t b) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  return std::min(std::min(a, kMost) * std::min(b, kMost), kMost);
}

}  // namespace

std::vector<SweepLine> linesOf(const Matrix& matrix) {
  std::vector<SweepLine> lines;
  if (needsExtraSources(matrix)) addSources(matrix, lines);
  std::array<bool, 3> isForward{true, true, true};
  Choice choice{};
  do {
    for (const TestType kind : matrix.kinds) {
      if (!hasTests(matrix, kind, choice)) continue;
      bool& forward = isForward[static_cast<std::size_t>(kind)];
      addMethods(matrix, kind, choice, forward, lines);
      forward = !forward;
    }
  } while (advance(matrix, choice));
  return lines;
}

std::int64_t mostLinesOf(const Matrix& matrix) {
  std::int64_t count = std::ssize(matrix.kinds) + 1;
  for (const auto& axis : matrix.axes) count = limitedProduct(count, std::ssize(axis));
  return count;
}

const char* wordOf(Method method) {
  if (method == Method::posix) return "posix";
  return method == Method::ansiC ? "ansic" : "stream";
}

std::string textOf(const SweepLine& line, bool markDone) {
  std::string text = wordOf(line.method);
  const auto add = [&text](const std::string& field) { text.append(";").append(field); };
  add(line.flush ? "flush" : "0");
  add(line.prealloc ? "prealloc" : "0");
  for (const std::int64_t number :
       {line.waitMs, line.chunkKib, line.buffer, line.sizeKib, line.iterations, std::int64_t{0}}) {
    add(std::to_string(number));
  }
  add(line.source.empty() ? "MEMORY" : line.source);
  add(line.dest.empty() ? "MEMORY" : line.dest);
  add(line.log);
  add(line.table);
  add(markDone ? "true" : "false");
  return text;
}

}  // namespace marrowbench::ctl
