#include <cmath>

#include "marrowctl/report/output.h"
#include "marrowctl/support/json_writer.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kKib = 1024;

void writeSpread(const char* key, const std::optional<Spread>& spread, JsonWriter& json) {
  json.key(key);
  if (!spread) {
    json.null();
    return;
  }
  json.beginObject().member("min", spread->min).member("p25", spread->p25);
  json.member("median", spread->median).member("p75", spread->p75).member("max", spread->max);
  json.member("mean", spread->mean).member("cv", spread->cv).endObject();
}

void writeRate(const char* key, const std::optional<Rate>& rate, JsonWriter& json) {
  json.key(key);
  if (!rate) {
    json.null();
    return;
  }
  json.beginObject().member("seconds", rate->seconds).member("bytes", std::llround(rate->bytes));
  json.member("mibPerSecond", rate->mibPerSecond).endObject();
}

void writeNames(const char* key, const std::vector<std::string>& names, JsonWriter& json) {
  json.key(key).beginArray();
  for (const std::string& name : names) json.value(name);
  json.endArray();
}

void writeHead(const Report& report, JsonWriter& json) {
  json.member("schema", "marrowctl.report/1").member("runs", report.results.runs.found);
  json.key("verdict").beginObject().member("complete", report.verdict.complete);
  json.member("concurrent", report.verdict.concurrent).member("clean", bool{report.verdict.clean});
  json.member("text", report.verdict.text).endObject();
  json.key("clients").beginObject().member("expected", report.clients.expected);
  json.member("found", report.clients.found);
  writeNames("missing", report.clients.missing, json);
  json.endObject();
  json.key("rows").beginObject().member("expected", report.rows.expected);
  json.member("read", report.rows.read).member("errors", report.rows.errors);
  json.member("nullData", report.rows.nullData).key("unusable").beginArray();
  for (const UnusableRow& row : report.results.unusable) {
    json.beginObject().member("file", report.results.files[row.file].path);
    json.member("line", static_cast<std::int64_t>(row.line));
    json.member("reason", row.reason).endObject();
  }
  json.endArray().endObject();
}

void writeParameters(const ResultTest& test, JsonWriter& json) {
  const Parameters& p = test.parameters;
  std::optional<std::string> settings;
  std::optional<std::int64_t> index, fileBytes;
  if (!test.settingsFile.empty()) settings = test.settingsFile;
  if (test.configIndex >= 0) index = test.configIndex;
  // Of what is read or copied a line need not give the size.
  if (p.type == TestType::write || p.fileKib != 0) fileBytes = p.fileKib * kKib;
  json.member("name", test.name).member("settingsFile", settings).member("configIndex", index);
  json.member("method", nameOf(p.method)).member("type", nameOf(p.type));
  json.member("flush", bool{p.flush}).member("preallocate", bool{p.preallocate});
  json.member("chunkWaitMs", p.chunkWaitMs).member("chunkBytes", p.chunkBytes);
  json.member("systemBuffer", p.systemBuffer).member("fileBytes", fileBytes);
}

void writeTest(const Report& report, std::size_t index, JsonWriter& json) {
  const TestReport& test = report.tests[index];
  const ResultSet& set = report.results;
  std::optional<std::string> firstStart, lastEnd;
  if (test.lastEnd != 0) {
    firstStart = isoTime(static_cast<std::int64_t>(std::floor(test.firstStart)));
    lastEnd = isoTime(test.lastEnd);
  }
  json.beginObject();
  writeParameters(set.tests[index], json);
  json.member("rows", test.rows).member("errors", test.errors).member("nullData", test.nullData);
  json.member("clients", static_cast<std::int64_t>(test.clients.size()));
  json.key("leftOut").beginArray();
  for (const ClientReport& client : test.clients) {
    if (client.isLeftOut) json.value(set.hosts[client.host]);
  }
  json.endArray();
  writeSpread("mibPerSecond", test.mibPerSecond, json);
  writeSpread("milliseconds", test.milliseconds, json);
  json.member("firstStart", firstStart).member("lastEnd", lastEnd).member("overlap", test.overlap);
  writeRate("allActive", test.allActive, json);
  writeRate("toTheLast", test.toTheLast, json);
  json.key("stragglers").beginArray();
  for (const Straggler& straggler : test.stragglers) {
    json.beginObject().member("host", set.hosts[straggler.host]);
    json.member("medianMibPerSecond", straggler.medianMibPerSecond);
    json.member("ratio", straggler.ratio).endObject();
  }
  json.endArray().endObject();
}

void writeSuspicions(const Report& report, JsonWriter& json) {
  json.key("suspicions").beginArray();
  for (const Suspicion& suspicion : report.suspicions) {
    std::optional<std::string> test;
    if (suspicion.test != kNone) test = report.results.tests[suspicion.test].name;
    json.beginObject().member("name", suspicion.name).member("test", test);
    writeNames("hosts", suspicion.hosts, json);
    json.member("message", suspicion.message).member("remedy", suspicion.remedy).endObject();
  }
  json.endArray();
}

void writeErrors(const Report& report, JsonWriter& json) {
  json.key("errors").beginArray();
  for (const ErrorGroup& group : report.errors) {
    json.beginObject().member("text", group.text).member("rows", group.rows);
    writeNames("hosts", group.hosts, json);
    json.member("first", isoTime(group.first)).member("last", isoTime(group.last)).endObject();
  }
  json.endArray();
}

}  // namespace

std::string reportJson(const Report& report) {
  std::string text;
  JsonWriter json(text);
  json.beginObject();
  writeHead(report, json);
  json.key("tests").beginArray();
  for (std::size_t i = 0; i < report.tests.size(); ++i) writeTest(report, i, json);
  json.endArray();
  writeSuspicions(report, json);
  writeErrors(report, json);
  json.endObject();
  return text + "\n";
}

int exitStatusOf(const Report& report) {
  const Verdict& verdict = report.verdict;
  return verdict.complete == false || verdict.concurrent == false || !verdict.clean ? 1 : 0;
}

}  // namespace marrowbench::ctl
