#include "marrowctl/sweep/sweep.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "marrowctl/sweep/matrix.h"
#include "marrowctl/sweep/output_name.h"
#include "marrowctl/sweep/sweep_files.h"
#include "marrowctl/sweep/sweep_lines.h"
#include "marrowctl/sweep/sweep_paths.h"

namespace marrowbench::ctl {
namespace {

using Refusal = std::optional<SweepRefusal>;
using Lines = std::vector<SweepLine>;

constexpr std::int64_t kMostTests = 100000;

SweepResult refused(const SweepRefusal& refusal) {
  return {{}, std::string(refusal.option), refusal.reason};
}

// What the path of a file that is read again may hold: the same for the line that writes it and for
// the one that reads it.
bool isReadable(const std::string& dest) {
  constexpr std::string_view kChanging[] = {"[date]",       "[cfgline]",   "[cfgTaskID]", "[cfgID]",
                                            "[cfgLogName]", "[cfgNameID]", "[cfgName]"};
  return std::none_of(std::begin(kChanging), std::end(kChanging),
                      [&dest](std::string_view placeholder) {
                        return findPlaceholder(dest, placeholder) != std::string::npos;
                      });
}

Refusal matrixRefusal(const Matrix& matrix) {
  const bool reads = matrix.has(TestType::read) || matrix.has(TestType::copy);
  if (!reads && !matrix.readsOwnFiles)
    return SweepRefusal{"source", "nothing is read: ask for kind read or copy"};
  if (!matrix.neighbours.empty() && !reads)
    return SweepRefusal{"neighbour", "nothing is read: ask for kind read or copy"};
  if (!matrix.neighbours.empty() && !matrix.readsOwnFiles) {
    return SweepRefusal{"source", "with neighbours their files are read"};
  }
  if (mostLinesOf(matrix) > kMostTests)
    return SweepRefusal{"output", "the matrix has more than 100,000 tests"};
  if (!reads || !matrix.readsOwnFiles) return std::nullopt;
  for (const AxisValue& dest : matrix.on(Axis::dest)) {
    if (isReadable(dest.text)) continue;
    return SweepRefusal{"dest", "\"" + dest.text +
                                    "\" is read again, and by another line or later it has " +
                                    "another name"};
  }
  return std::nullopt;
}

Refusal linesRefusal(const Lines& lines, const std::string& folder) {
  std::set<std::string> written;
  for (const SweepLine& line : lines) {
    if (Refusal r = refusalOf(line, folder)) return r;
    if (line.dest.empty() || written.insert(line.dest).second) continue;
    return SweepRefusal{"dest", "two tests would write \"" + line.dest + "\""};
  }
  return std::nullopt;
}

Refusal outputRefusal(const OutputName& output, const Matrix& matrix, const Lines& lines) {
  if (!output.isStandardOutput) return std::nullopt;
  if (!matrix.neighbours.empty())
    return SweepRefusal{"output", "neighbours need files: give --output NAME.bst"};
  if (std::ssize(lines) <= kMaxTestLines) return std::nullopt;
  return SweepRefusal{"output",
                      std::to_string(lines.size()) +
                          " tests are more than the 200 of one file: give --output NAME.bst"};
}

Lines readByNeighbour(Lines lines, const std::string& neighbour) {
  for (SweepLine& line : lines) line.source = onHost(line.source, neighbour);
  return lines;
}

std::vector<std::string> phaseComments(const OutputName& output) {
  const std::string name = output.stem;
  return {"Then each client reads the files of its neighbour, by " + name + "-HOST" +
              output.suffix + ".",
          "Put those files here when all clients have left their markers in _" + name +
              "_log: the clients wait for them.",
          "To check this file, name the clients: marrowctl check --hosts LIST."};
}

// The writes of all clients, then a file for each client with what it reads.
void addNeighbourFiles(const OutputName& output, const SweepOptions& options, const Matrix& matrix,
                       Lines lines, std::vector<SweepFile>& files) {
  const auto firstRead =
      std::stable_partition(lines.begin(), lines.end(),
                            [](const SweepLine& line) { return line.kind == TestType::write; });
  const Lines writes(lines.begin(), firstRead);
  const Lines reads(firstRead, lines.end());
  addFiles(output, {"", "-[host]", phaseComments(output)}, options.command, writes, files);
  for (std::size_t i = 0; i < matrix.neighbours.size(); ++i) {
    const std::string& neighbour = matrix.neighbours[(i + 1) % matrix.neighbours.size()];
    addFiles(output, {"-" + matrix.neighbours[i], "", {"Reads the files of " + neighbour + "."}},
             options.command, readByNeighbour(reads, neighbour), files);
  }
}

bool haveNamesOfTheirOwn(const std::vector<SweepFile>& files) {
  std::set<std::string> names;
  return std::all_of(files.begin(), files.end(),
                     [&names](const SweepFile& file) { return names.insert(file.name).second; });
}

Refusal refusalOfAll(const OutputName& output, const Matrix& matrix, const Lines& lines) {
  if (Refusal r = linesRefusal(lines, output.folder)) return r;
  return outputRefusal(output, matrix, lines);
}

}  // namespace

SweepResult makeSweep(const SweepOptions& options) {
  Matrix matrix;
  if (const Refusal r = readMatrix(options, matrix)) return refused(*r);
  if (const Refusal r = matrixRefusal(matrix)) return refused(*r);
  OutputName output;
  (void)readOutputName(options.output, output);  // readMatrix() has taken it

  Lines lines = linesOf(matrix);
  if (const Refusal r = refusalOfAll(output, matrix, lines)) return refused(*r);

  SweepResult result;
  if (matrix.neighbours.empty()) {
    addFiles(output, {}, options.command, lines, result.files);
  } else {
    addNeighbourFiles(output, options, matrix, std::move(lines), result.files);
  }
  if (haveNamesOfTheirOwn(result.files)) return result;
  return refused(
      {"neighbour", "two files of the set would have one name: choose another --output"});
}

}  // namespace marrowbench::ctl
