#include "marrowctl/sweep/sweep_files.h"

#include <algorithm>

#include "settings/test_config.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kTestsOfFile = static_cast<std::size_t>(kMaxTestLines);
// A comment is cut where a line of a settings file is.
constexpr std::size_t kLongestComment = 900;

std::string comment(const std::string& text) {
  std::string line = text.substr(0, kLongestComment);
  // A line break would end the comment and begin a test.
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
  if (line.size() < text.size()) line += " ...";
  return (line.empty() ? "#" : "# " + line) + "\n";
}

std::string additionOf(const SweepPart& part, std::size_t file) {
  return file == 0 ? part.addition : part.addition + "-" + std::to_string(file + 1);
}

std::string headOf(const SweepPart& part, const std::string& command, std::size_t file,
                   std::size_t fileCount, std::size_t tests) {
  std::string head;
  if (!command.empty()) head += comment("Made by: " + command);
  std::string count = std::to_string(tests) + (tests == 1 ? " test" : " tests");
  if (fileCount > 1)
    count += ", file " + std::to_string(file + 1) + " of " + std::to_string(fileCount);
  head += comment(count + ".");
  for (const std::string& text : part.comments) head += comment(text);
  head += comment("");
  head += comment(
      "method;flush;prealloc;wait ms;chunk KiB;buffer;size KiB;iterations;cache mode;source;dest;"
      "log;table;done");
  return head;
}

// "[cfgPath]" ends in "/"; without it the path would be taken from the folder of the start.
std::string chainTo(const OutputName& output, const std::string& addition) {
  return "[cfgPath]" + output.stem + addition + output.suffix + "\n";
}

}  // namespace

void addFiles(const OutputName& output, const SweepPart& part, const std::string& command,
              std::span<const SweepLine> lines, std::vector<SweepFile>& files) {
  const std::size_t fileCount = (lines.size() + kTestsOfFile - 1) / kTestsOfFile;
  for (std::size_t file = 0; file < fileCount; ++file) {
    const std::size_t first = file * kTestsOfFile;
    const auto tests = lines.subspan(first, std::min(kTestsOfFile, lines.size() - first));
    std::string text = headOf(part, command, file, fileCount, tests.size());
    for (std::size_t i = 0; i < tests.size(); ++i)
      text += textOf(tests[i], i + 1 == tests.size()) + "\n";
    const bool isLast = file + 1 == fileCount;
    if (!isLast) text += chainTo(output, additionOf(part, file + 1));
    if (isLast && !part.next.empty()) text += chainTo(output, part.next);
    files.push_back({output.path(additionOf(part, file)), std::move(text)});
  }
}

}  // namespace marrowbench::ctl
