#include "marrowctl/main/fleet_run_words.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "marrowctl/support/folded_names.h"
#include "marrowctl/support/shell_words.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

// Of a recipe with a line for each client.
constexpr int kMostLines = 12;

void append(Words& words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
}

Words place(const RecipeOptions& recipe) {
  return {"--control", recipe.folder.control, "--run", recipe.folder.run};
}

std::string seconds(std::int64_t count) { return std::to_string(count) + "s"; }

void sayCommand(const std::string& command) {
  const std::string line = toned("$ " + printable(command), Tone::strong, styleOf(stderr));
  (void)std::fprintf(stderr, "\n%s\n", line.c_str());
  (void)std::fflush(stderr);
}

// The commands of a recipe without its comments.
std::string commandsOf(const std::string& recipe) {
  std::istringstream lines(recipe);
  std::string text;
  int count = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (++count <= kMostLines) text += "  " + printable(line) + "\n";
  }
  if (count > kMostLines)
    text += "  ... and " + std::to_string(count - kMostLines) + " lines more\n";
  return text;
}

// Engines draw a counter in the line that a client's message then takes.
std::string_view lastDrawn(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line.substr(line.rfind('\r') + 1);
}

}  // namespace

std::string listOf(const RecipeOptions& recipe) { return foldedNames(recipe.hosts); }

Words checkWords(const RecipeOptions& recipe, const RunCommand& run) {
  // By its whole path: a folder of relative paths may be refused where its text is too short.
  std::error_code code;
  const std::filesystem::path whole = std::filesystem::absolute(run.file, code);
  Words words = {"marrowctl", "check", "--hosts", listOf(recipe), code ? run.file : whole.string()};
  if (run.isStrict) words.emplace_back("--strict");
  return words;
}

Words probeWords(const RecipeOptions& recipe) {
  return {"marrowctl", "fleet", "probe", "--quick", recipe.folder.control};
}

Words recipeWords(const std::string& engine, const RecipeOptions& recipe) {
  Words words = {"marrowctl", "fleet", "recipe", engine, "--hosts", listOf(recipe)};
  append(words, place(recipe));
  if (recipe.giveUp) append(words, {"--give-up", seconds(*recipe.giveUp)});
  if (recipe.program != RecipeOptions().program) append(words, {"--marrowctl", recipe.program});
  return words;
}

Words publishWords(const RecipeOptions& recipe, const RunCommand& run) {
  Words words = {"marrowctl", "fleet", "publish"};
  append(words, place(recipe));
  append(words, {"--hosts", listOf(recipe), run.file});
  return words;
}

Words watchWords(const RecipeOptions& recipe, const std::optional<std::int64_t>& timeoutSeconds) {
  Words words = {"marrowctl", "fleet", "watch"};
  append(words, place(recipe));
  append(words, {"--hosts", listOf(recipe)});
  if (timeoutSeconds) append(words, {"--timeout", seconds(*timeoutSeconds)});
  return words;
}

Words reportWords(const RecipeOptions& recipe, const ReportCommand& report) {
  Words words = {"marrowctl", "report"};
  append(words, report.tables);
  append(words, {"--settings", recipe.folder.settings(), "--hosts", listOf(recipe)});
  if (!report.doneFolder.empty()) append(words, {"--done", report.doneFolder});
  if (!report.page.file.empty()) append(words, {"--html", report.page.file});
  if (report.page.overwrites) words.emplace_back("--force");
  return words;
}

void sayStep(const Words& words) { sayCommand(shellCommand(words)); }

void sayRecipe(Engine engine, const std::string& name, const RecipeOptions& recipe) {
  const std::string command = shellCommand(recipeWords(name, recipe));
  if (engine == Engine::ansible) {
    const std::string file = "arm.yml";
    sayCommand(command + " >" + file);
    return sayStep(commandFor(engine, file, recipe.hosts.size()));
  }
  sayCommand(command + " | sh");
  (void)std::fputs(commandsOf(makeRecipe(engine, recipe).text).c_str(), stderr);
}

std::string printableLines(std::string_view text) {
  std::string lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines += printable(lastDrawn(text.substr(0, end))) + "\n";
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

}  // namespace marrowbench::ctl
