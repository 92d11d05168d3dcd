#include <algorithm>
#include <string>

#include "marrowctl/check/changes.h"
#include "marrowctl/check/output.h"
#include "marrowctl/check/survey.h"
#include "marrowctl/support/json_writer.h"

namespace marrowbench::ctl {
namespace {

void writeChanges(const PlannedTest& test, JsonWriter& json) {
  json.key("changes").beginArray();
  for (const Change& change : changesOf(test)) {
    json.beginObject().member("field", change.field);
    for (const auto& [key, value] : {std::pair("from", change.from), std::pair("to", change.to)}) {
      if (change.isFlag) {
        json.member(key, value != 0);
      } else {
        json.member(key, value);
      }
    }
    json.member("why", change.why).endObject();
  }
  json.endArray();
}

void writePaths(const Survey& survey, const SurveyedTest& test, std::size_t host,
                std::int32_t iteration, JsonWriter& json) {
  const auto path = [&](const PathPattern& pattern) {
    return survey.path(test, pattern, host, iteration);
  };
  const auto dataPath = [&](const PathPattern& pattern) {
    const std::string text = path(pattern);
    return text.empty() ? "MEMORY" : text;
  };
  const auto report = [&](const char* key, Field field, const PathPattern& pattern) {
    json.key(key);
    if (test.text(field).empty()) {
      json.null();
    } else {
      json.value(path(pattern));
    }
  };
  json.beginObject().member("host", survey.plan.hosts[host]).member("iteration", iteration);
  json.member("source", dataPath(test.source())).member("dest", dataPath(test.dest()));
  report("log", Field::log, test.log());
  report("table", Field::table, test.table());
  json.endObject();
}

void writeAllPaths(const Survey& survey, const SurveyedTest& test, JsonWriter& json) {
  const std::int32_t last = test.test().lastIteration();
  json.key("paths").beginArray();
  for (std::size_t host = 0; test.isRepeated() && host < survey.plan.hosts.size(); ++host) {
    writePaths(survey, test, host, 0, json);
    if (last > 0) writePaths(survey, test, host, last, json);
  }
  json.endArray();
}

void writeLine(const Survey& survey, const SurveyedTest& surveyed, JsonWriter& json) {
  const PlannedTest& test = surveyed.test();
  const ParameterBlock& used = test.used;
  json.beginObject().member("line", surveyed.line->number).member("configIndex", test.configIndex);
  json.member("method", nameOf(test.method)).member("type", nameOf(test.type));
  json.member("flush", bool{used.flush}).member("preallocate", bool{used.prealloc});
  json.member("chunkWaitMs", used.chunkWait).member("chunkBytes", used.chunkSize);
  json.member("systemBuffer", used.systemBuffer).member("fileBytes", used.fileSize);
  json.member("iterations", test.iterations).member("cacheMode", used.emptyCacheMode);
  json.member("markDone", test.markDone);
  writeChanges(test, json);
  writeAllPaths(survey, surveyed, json);
  json.endObject();
}

// The tests of a file stand together; `next` is the first that is not written yet.
void writeFile(const Survey& survey, const PlannedFile& file, std::size_t& next, JsonWriter& json) {
  json.beginObject().member("path", file.path).key("allowed").beginArray();
  for (const AllowComment& comment : file.allows) {
    for (const AllowComment::Name& name : comment.names) json.value(name.text);
  }
  json.endArray().key("lines").beginArray();
  for (; next < survey.tests.size() && survey.tests[next].file == &file; ++next) {
    writeLine(survey, survey.tests[next], json);
  }
  json.endArray().key("chain");
  if (file.chain.empty()) {
    json.null();
  } else {
    json.value(file.chain);
  }
  json.endObject();
}

void writeTotals(const Totals& totals, JsonWriter& json) {
  json.key("totals").beginObject().member("clients", totals.clients);
  json.member("rowsPerClient", totals.rowsPerClient).member("rows", totals.rows);
  json.member("bytesWritten", totals.bytesWritten).member("bytesRead", totals.bytesRead);
  json.member("filesLeft", totals.filesLeft).member("pauseSeconds", totals.pauseSeconds);
  json.member("memoryBytes", totals.memoryBytes).key("markers").beginArray();
  for (const std::string& marker : totals.markers) json.value(marker);
  json.endArray().endObject();
}

void writePlace(const char* key, const std::optional<int>& number, JsonWriter& json) {
  json.key(key);
  if (number) {
    json.value(*number);
  } else {
    json.null();
  }
}

void writeFinding(const Finding& finding, JsonWriter& json) {
  json.beginObject().member("name", finding.name).member("severity", nameOf(finding.severity));
  json.member("file", finding.file);
  writePlace("line", finding.line, json);
  writePlace("column", finding.column, json);
  json.key("field");
  if (finding.field) {
    json.value(*finding.field);
  } else {
    json.null();
  }
  json.member("message", finding.message).member("remedy", finding.remedy).endObject();
}

}  // namespace

std::string checkJson(const Plan& plan, const Totals& totals,
                      const std::vector<Finding>& findings) {
  const Survey survey(plan);
  std::string text;
  JsonWriter json(text);
  json.beginObject().member("schema", "marrowctl.check/1").key("files").beginArray();
  std::size_t next = 0;
  for (const PlannedFile& file : plan.files) writeFile(survey, file, next, json);
  json.endArray();
  writeTotals(totals, json);
  json.key("findings").beginArray();
  for (const Finding& finding : findings) writeFinding(finding, json);
  json.endArray().endObject();
  text += '\n';
  return text;
}

}  // namespace marrowbench::ctl
