#include <fmt/format.h>

#include <algorithm>

#include "marrowctl/report/compare.h"
#include "marrowctl/report/text_parts.h"
#include "marrowctl/support/json_writer.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

Tone toneOf(Difference difference) {
  switch (difference) {
    case Difference::slower: return Tone::red;
    case Difference::faster: return Tone::green;
    case Difference::same: return Tone::plain;
    case Difference::cannotTell: return Tone::yellow;
  }
  return Tone::plain;
}

std::string figuresOf(const ComparedTest& test) {
  const auto speed = [](const ComparedSide& side) {
    return side.medianMibPerSecond ? shownSpeed(*side.medianMibPerSecond) : std::string("-");
  };
  const std::string ratio = test.ratio ? fmt::format("{:.3f}", *test.ratio) : "-";
  const std::string interval =
      test.low ? fmt::format("{:.3f} to {:.3f}", *test.low, *test.high) : "-";
  return rightIn(speed(test.before), 12) + rightIn(speed(test.after), 12) + rightIn(ratio, 10) +
         rightIn(interval, 18) + rightIn(shownCount(test.before.rows), 10) +
         rightIn(shownCount(test.after.rows), 10);
}

std::string testText(const ComparedTest& test, const TextStyle& style) {
  constexpr int kVerdictColumns = 14;
  return toned(printable(test.name), Tone::strong, style) + "\n  " +
         toned(leftIn(nameOf(test.difference), kVerdictColumns), toneOf(test.difference), style) +
         figuresOf(test) + "\n";
}

std::string columnTitles(const TextStyle& style) {
  const std::string text = leftIn("", 16) + rightIn("old MiB/s", 12) + rightIn("new MiB/s", 12) +
                           rightIn("new/old", 10) + rightIn("95 % interval", 18) +
                           rightIn("old rows", 10) + rightIn("new rows", 10);
  return toned(text, Tone::faint, style) + "\n";
}

std::string othersText(const char* title, const std::vector<std::string>& names,
                       const TextStyle& style) {
  if (names.empty()) return {};
  std::string text = titleText(title, style);
  for (const std::string& name : names) text += "  " + printable(name) + "\n";
  return text;
}

void writeSide(const char* key, const ComparedSide& side, JsonWriter& json) {
  json.key(key).beginObject().member("rows", side.rows).member("clients", side.clients);
  json.member("medianMibPerSecond", side.medianMibPerSecond).endObject();
}

void writeNames(const char* key, const std::vector<std::string>& names, JsonWriter& json) {
  json.key(key).beginArray();
  for (const std::string& name : names) json.value(name);
  json.endArray();
}

}  // namespace

std::string_view nameOf(Difference difference) {
  switch (difference) {
    case Difference::slower: return "slower";
    case Difference::faster: return "faster";
    case Difference::same: return "the same";
    case Difference::cannotTell: return "cannot tell";
  }
  return "";
}

std::int64_t countOf(const Comparison& comparison, Difference difference) {
  return std::count_if(
      comparison.tests.begin(), comparison.tests.end(),
      [difference](const ComparedTest& test) { return test.difference == difference; });
}

std::string summaryOf(const Comparison& comparison) {
  const auto count = static_cast<std::int64_t>(comparison.tests.size());
  std::string text = shownCount(count, "test") + " in both: ";
  constexpr std::pair<Difference, const char*> kAll[] = {{Difference::slower, "slower"},
                                                         {Difference::faster, "faster"},
                                                         {Difference::same, "the same"},
                                                         {Difference::cannotTell, "cannot tell"}};
  std::string parts;
  for (const auto& [difference, name] : kAll) {
    const std::int64_t found = countOf(comparison, difference);
    if (found > 0) parts += (parts.empty() ? "" : ", ") + shownCount(found) + " " + name;
  }
  return text + (parts.empty() ? "nothing to compare" : parts) + ".";
}

std::string compareText(const Comparison& comparison, const TextStyle& style) {
  std::string text = wrapped(summaryOf(comparison), 0, style.width);
  if (!comparison.tests.empty()) text += "\n" + columnTitles(style);
  for (const ComparedTest& test : comparison.tests) text += testText(test, style);
  text += othersText("Only in the old tables", comparison.onlyOld, style);
  text += othersText("Only in the new tables", comparison.onlyNew, style);
  const std::string legend = wrapped(
      "Speeds are medians over rows. The interval holds the true ratio with a chance of 95 %: a "
      "test "
      "is slower or faster when 1 lies outside, the same when it lies within 0.98 to 1.02. With "
      "fewer than 5 rows a side nobody can tell.",
      0, style.width);
  return text + "\n" + toned(legend, Tone::faint, style);
}

std::string compareJson(const Comparison& comparison) {
  std::string text;
  JsonWriter json(text);
  json.beginObject().member("schema", "marrowctl.compare/1").key("tests").beginArray();
  for (const ComparedTest& test : comparison.tests) {
    json.beginObject().member("name", test.name);
    writeSide("old", test.before, json);
    writeSide("new", test.after, json);
    json.member("ratio", test.ratio).member("low", test.low).member("high", test.high);
    json.member("verdict", nameOf(test.difference)).endObject();
  }
  json.endArray();
  writeNames("onlyOld", comparison.onlyOld, json);
  writeNames("onlyNew", comparison.onlyNew, json);
  json.endObject();
  return text + "\n";
}

}  // namespace marrowbench::ctl
