#include "marrowctl/sweep/matrix.h"

#include <algorithm>
#include <functional>

#include "marrowctl/support/units.h"
#include "marrowctl/sweep/output_name.h"
#include "marrowctl/sweep/sweep_paths.h"
#include "marrowctl/sweep/value_list.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

using Refusal = std::optional<SweepRefusal>;
using Values = std::vector<AxisValue>;

constexpr std::int64_t kKib = 1024;

Refusal refusal(std::string_view option, std::string reason) {
  if (reason.empty()) return std::nullopt;
  return SweepRefusal{option, std::move(reason)};
}

const std::string& orDefault(const std::string& text, const std::string& usual) {
  return text.empty() ? usual : text;
}

// Stores the values of a list that `toValue` takes; it gives a reason for the first that it does
// not.
template <typename Value>
std::string store(const ValueList<Value>& list, Values& values,
                  const std::function<std::string(const Value&, AxisValue&)>& toValue) {
  if (!list.reason.empty()) return list.reason;
  for (const Value& item : list.values) {
    AxisValue value;
    if (std::string reason = toValue(item, value); !reason.empty()) return reason;
    values.push_back(std::move(value));
  }
  return {};
}

std::string takeMethods(const std::string& text, Values& values) {
  constexpr std::string_view kWords[] = {"posix", "ansic", "stream", "system"};
  constexpr Method kMethods[] = {Method::posix, Method::ansiC, Method::stream, Method::system};
  return store<std::size_t>(
      listWords(text, kWords), values, [&](const auto& word, AxisValue& value) {
        if (kMethods[word] == Method::system)
          return std::string("system runs nothing, so it measures nothing");
        value = {static_cast<std::int64_t>(kMethods[word]), "", std::string(kWords[word])};
        return std::string();
      });
}

std::string takeKinds(const std::string& text, std::vector<TestType>& kinds) {
  constexpr std::string_view kWords[] = {"write", "copy", "read"};
  constexpr TestType kTypes[] = {TestType::write, TestType::copy, TestType::read};
  ValueList<std::size_t> list = listWords(text, kWords);
  // What is read is written before.
  std::sort(list.values.begin(), list.values.end());
  for (const std::size_t word : list.values) kinds.push_back(kTypes[word]);
  return list.reason;
}

// For names of files: "4K", "1536M".
std::string shortSize(std::int64_t kib) {
  if (kib % (kKib * kKib) == 0) return std::to_string(kib / (kKib * kKib)) + "G";
  if (kib % kKib == 0) return std::to_string(kib / kKib) + "M";
  return std::to_string(kib) + "K";
}

std::string takeSize(std::int64_t bytes, AxisValue& value) {
  if (bytes % kKib != 0) {
    return shownSize(bytes) + " is no multiple of 1 KiB, in which settings files count";
  }
  if (bytes > kMaxFileSize)
    return shownSize(bytes) + " is more than 1 GiB, the largest that the program takes";
  value = {bytes / kKib, "", shortSize(bytes / kKib)};
  return {};
}

std::string takeChunks(const std::string& text, Values& values) {
  return store<std::int64_t>(listSizes(text), values, [](const auto& bytes, AxisValue& value) {
    std::string reason = takeSize(bytes, value);
    if (bytes == 0) value.label = "whole";
    return reason;
  });
}

std::string takeSizes(const std::string& text, Values& values) {
  return store<std::int64_t>(listSizes(text), values, [](const auto& bytes, AxisValue& value) {
    return bytes == 0 ? std::string("a file of 0 bytes measures nothing") : takeSize(bytes, value);
  });
}

std::string takeNumbers(const std::string& text, std::int64_t least, std::int64_t most,
                        const std::string& why, const std::string& unit, Values& values) {
  return store<std::int64_t>(listNumbers(text), values, [&](const auto& number, AxisValue& value) {
    value = {number, "", unit + std::to_string(number)};
    if (number >= least && number <= most) return std::string();
    return std::to_string(number) + " is outside " + std::to_string(least) + " to " +
           std::to_string(most) + ": " + why;
  });
}

std::string takeBuffers(const std::string& text, Values& values) {
  std::string reason = takeNumbers(
      text, -1, 1, "-1 is the interface's own, 0 none, 1 one of the chunk size", "", values);
  constexpr const char* kLabels[] = {"own", "none", "chunk"};
  if (reason.empty()) {
    for (AxisValue& value : values) value.label = kLabels[value.number + 1];
  }
  return reason;
}

std::string takeFlags(const std::string& text, const std::string& name, Values& values) {
  const std::string_view words[] = {"no", "yes", "false", "true", "0", "1", "off", "on", name};
  return store<std::size_t>(
      listWords(text, words), values, [&](const auto& word, AxisValue& value) {
        const bool isYes = word == std::size(words) - 1 || word % 2 == 1;
        value = {isYes ? 1 : 0, "", (isYes ? "" : "no") + name};
        const bool isKnown = std::any_of(values.begin(), values.end(), [&](const AxisValue& known) {
          return known.number == value.number;
        });
        return isKnown ? std::string("yes and no come once each") : std::string();
      });
}

std::string takePaths(const std::string& text, const OutputName& output, const std::string& label,
                      Values& values) {
  return store<std::string>(listTexts(text), values, [&](const auto& item, AxisValue& value) {
    const std::string path = withForwardSlashes(item);
    value = {0, output.anchored(path), label + std::to_string(values.size() + 1)};
    return reasonAgainstPath(path);
  });
}

std::string takeFiles(const std::string& text, const OutputName& output, const std::string& label,
                      Values& values) {
  std::string reason = takePaths(text, output, label, values);
  if (!reason.empty()) return reason;
  const auto folder = std::find_if(values.begin(), values.end(), [](const AxisValue& value) {
    return value.text.ends_with('/');
  });
  return folder == values.end() ? "" : "\"" + folder->text + "\" is a folder, no file";
}

std::string takeNeighbours(const std::vector<std::string>& names, std::vector<std::string>& hosts) {
  for (const std::string& name : names) {
    const std::string host(hostNameFrom(name).view());
    if (std::string reason = reasonAgainstHost(name); !reason.empty()) return reason;
    if (std::find(hosts.begin(), hosts.end(), host) != hosts.end()) {
      return "\"" + host + R"(" comes twice; names are cut at their first ".")";
    }
    hosts.push_back(host);
  }
  return hosts.size() == 1 ? "one client has no neighbour" : "";
}

struct Defaults {
  std::string kind, dest, log, table;
};

Defaults defaultsOf(const SweepOptions& options, const OutputName& output) {
  const std::string name = output.safeStem();
  // A row tells its client by its paths or by its table.
  const bool hasOwnTables = !options.source.empty() && !holdsHost(options.source);
  return {options.neighbours.empty() ? "write" : "write,read", name + "_data/[host]/",
          name + "_log_[host].txt", name + (hasOwnTables ? "_results_[host].csv" : "_results.csv")};
}

Values& axis(Matrix& matrix, Axis axis) { return matrix.axes[static_cast<std::size_t>(axis)]; }

// The row of a read names its file, which is a neighbour's: only the table tells whose row it is.
void giveTablesToHosts(Values& tables) {
  for (AxisValue& table : tables) {
    if (!holdsHost(table.text)) table.text = withWords(table.text, {"[host]"});
  }
}

Refusal readPaths(const SweepOptions& o, const Defaults& usual, const OutputName& output,
                  Matrix& m) {
  if (auto r = refusal(
          "dest", takePaths(orDefault(o.dest, usual.dest), output, "dest", axis(m, Axis::dest))))
    return r;
  if (auto r =
          refusal("log", takeFiles(orDefault(o.log, usual.log), output, "log", axis(m, Axis::log))))
    return r;
  if (auto r = refusal("table", takeFiles(orDefault(o.table, usual.table), output, "table",
                                          axis(m, Axis::table))))
    return r;
  if (!o.neighbours.empty()) giveTablesToHosts(axis(m, Axis::table));
  m.readsOwnFiles = o.source.empty();
  if (m.readsOwnFiles) {
    axis(m, Axis::source) = {{}};
    return std::nullopt;
  }
  return refusal("source", takeFiles(o.source, output, "source", axis(m, Axis::source)));
}

Refusal readParameters(const SweepOptions& o, const Defaults& usual, Matrix& m) {
  constexpr std::int64_t kLongestWait = 65535;
  constexpr std::int64_t kMostIterations = 1000000;
  if (auto r = refusal("method", takeMethods(orDefault(o.method, "posix"), axis(m, Axis::method))))
    return r;
  if (auto r = refusal("kind", takeKinds(orDefault(o.kind, usual.kind), m.kinds))) return r;
  if (auto r = refusal("chunk", takeChunks(orDefault(o.chunk, "1M"), axis(m, Axis::chunk))))
    return r;
  if (auto r = refusal("size", takeSizes(orDefault(o.size, "256M"), axis(m, Axis::size)))) return r;
  if (auto r = refusal("buffer", takeBuffers(orDefault(o.buffer, "-1"), axis(m, Axis::buffer))))
    return r;
  if (auto r = refusal("wait", takeNumbers(orDefault(o.wait, "0"), 0, kLongestWait,
                                           "the program counts milliseconds in 16 bits", "wait",
                                           axis(m, Axis::wait))))
    return r;
  if (auto r = refusal("iterations",
                       takeNumbers(orDefault(o.iterations, "1"), 1, kMostIterations,
                                   "a test runs at least once", "x", axis(m, Axis::iterations))))
    return r;
  if (auto r = refusal("flush", takeFlags(orDefault(o.flush, "no"), "flush", axis(m, Axis::flush))))
    return r;
  return refusal("prealloc",
                 takeFlags(orDefault(o.prealloc, "no"), "prealloc", axis(m, Axis::prealloc)));
}

}  // namespace

bool Matrix::has(TestType kind) const {
  return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

bool Matrix::extends(TestType kind, Axis axis) const {
  const bool namesSource = kind != TestType::write && !readsOwnFiles;
  if (axis == Axis::source) return namesSource;
  if (axis == Axis::size) return !namesSource;
  if (axis == Axis::dest) return kind != TestType::read || readsOwnFiles;
  return true;
}

std::optional<SweepRefusal> readMatrix(const SweepOptions& options, Matrix& matrix) {
  OutputName output;
  if (auto r = refusal("output", readOutputName(options.output, output))) return r;
  const Defaults usual = defaultsOf(options, output);
  if (auto r = readPaths(options, usual, output, matrix)) return r;
  if (auto r = readParameters(options, usual, matrix)) return r;
  return refusal("neighbour", takeNeighbours(options.neighbours, matrix.neighbours));
}

}  // namespace marrowbench::ctl
