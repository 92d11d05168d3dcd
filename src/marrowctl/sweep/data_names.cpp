#include "marrowctl/sweep/data_names.h"

#include <algorithm>
#include <vector>

#include "marrowctl/sweep/sweep_paths.h"

namespace marrowbench::ctl {
namespace {

using Words = std::vector<std::string>;

bool isAnsiC(const AxisValue& method) {
  return method.number == static_cast<std::int64_t>(Method::ansiC);
}

bool holds(const std::string& path, std::string_view placeholder) {
  return findPlaceholder(path, placeholder) != std::string::npos;
}

// A folder gets names that tell all; a name that was given gets what tells the tests apart.
bool isTold(const Matrix& matrix, Axis axis, const std::string& dest) {
  const bool isAlways = axis == Axis::method || axis == Axis::chunk || axis == Axis::size;
  return matrix.on(axis).size() > 1 || (isAlways && dest.ends_with('/'));
}

void addLabels(const Matrix& matrix, const Choice& choice, std::initializer_list<Axis> axes,
               Words& words) {
  const std::string& dest = matrix.at(choice, Axis::dest).text;
  for (const Axis axis : axes) {
    if (isTold(matrix, axis, dest)) words.push_back(matrix.at(choice, axis).label);
  }
}

Words hostWords(const std::string& dest) { return holdsHost(dest) ? Words{} : Words{"[host]"}; }

// AnsiC can't have written what is read; the matrix then has another method.
Choice writerOf(const Matrix& matrix, Choice choice) {
  if (!isAnsiC(matrix.at(choice, Axis::method))) return choice;
  const auto& methods = matrix.on(Axis::method);
  const auto other = std::find_if_not(methods.begin(), methods.end(), isAnsiC);
  choice[static_cast<std::size_t>(Axis::method)] =
      static_cast<std::size_t>(other - methods.begin());
  return choice;
}

}  // namespace

std::string writtenPath(const Matrix& matrix, TestType kind, const Choice& choice) {
  const std::string& dest = matrix.at(choice, Axis::dest).text;
  Words words = hostWords(dest);
  const bool areBoth = matrix.has(TestType::write) && matrix.has(TestType::copy);
  if (areBoth || dest.ends_with('/'))
    words.emplace_back(kind == TestType::write ? "write" : "copy");
  addLabels(matrix, choice,
            {Axis::method, Axis::chunk, Axis::size, Axis::buffer, Axis::wait, Axis::iterations,
             Axis::flush, Axis::prealloc, Axis::log, Axis::table},
            words);
  if (matrix.extends(kind, Axis::source)) addLabels(matrix, choice, {Axis::source}, words);
  const bool isFresh = isAnsiC(matrix.at(choice, Axis::method));
  const bool isRepeated = matrix.at(choice, Axis::iterations).number > 1;
  if ((isFresh || isRepeated) && !holds(dest, "[iter]")) words.emplace_back("[iter]");
  if (isFresh && !holds(dest, "[date]")) words.emplace_back("[date]");
  return withWords(dest, words);
}

std::string readPath(const Matrix& matrix, const Choice& choice) {
  if (!matrix.readsOwnFiles) return matrix.at(choice, Axis::source).text;
  if (needsExtraSources(matrix)) return extraSourcePath(matrix, choice);
  return writtenPath(matrix, TestType::write, writerOf(matrix, choice));
}

bool needsExtraSources(const Matrix& matrix) {
  const bool reads = matrix.has(TestType::read) || matrix.has(TestType::copy);
  if (!reads || !matrix.readsOwnFiles) return false;
  const auto& methods = matrix.on(Axis::method);
  return !matrix.has(TestType::write) || std::all_of(methods.begin(), methods.end(), isAnsiC);
}

std::string extraSourcePath(const Matrix& matrix, const Choice& choice) {
  const std::string& dest = matrix.at(choice, Axis::dest).text;
  Words words = hostWords(dest);
  words.emplace_back("source");
  addLabels(matrix, choice, {Axis::size, Axis::iterations}, words);
  const bool isRepeated = matrix.at(choice, Axis::iterations).number > 1;
  if (isRepeated && !holds(dest, "[iter]")) words.emplace_back("[iter]");
  return withWords(dest, words);
}

}  // namespace marrowbench::ctl
