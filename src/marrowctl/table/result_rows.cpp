#include <algorithm>
#include <cmath>

#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kKib = 1024;

std::int64_t bytesOf(const StoredRow& row, const Parameters& parameters) {
  if (parameters.type == TestType::write) return parameters.fileKib * kKib;
  // KiB/s times ms: 1.024 bytes each.
  const double kibMs = static_cast<double>(row.kibPerSecond) * row.milliseconds;
  return std::llround(kibMs * 1.024);
}

}  // namespace

bool RowCursor::next() {
  do {
    if (!stored.next()) return false;
  } while (!visits(stored.row()));
  const StoredRow& row = stored.row();
  const RowKind& kind = stored.kind();
  const Series& series = set_.series[row.series];
  current.end = row.end;
  current.milliseconds = row.milliseconds;
  current.exactStart = static_cast<double>(row.end) - row.milliseconds / 1000.0;
  current.start = static_cast<std::int64_t>(std::floor(current.exactStart));
  current.series = row.series;
  current.host = series.host;
  current.test = series.test;
  current.iteration = row.iteration;
  current.hasError = !kind.error.empty();
  current.moved = !current.hasError && (row.flags & hasNoSpeed) == 0 && row.milliseconds > 0 &&
                  kind.parameters.method != Method::system;
  current.bytes = current.moved ? bytesOf(row, kind.parameters) : 0;
  current.speedPercent = row.percent;
  current.nullPosition = (row.flags & nullLookedFor) != 0 ? 0 : -1;
  if ((row.flags & (hasNullData | hasWidePercent)) != 0) {
    const WideValues wide = stored.wide();
    if ((row.flags & hasNullData) != 0) current.nullPosition = wide.nullPosition;
    if ((row.flags & hasWidePercent) != 0) current.speedPercent = wide.percent;
  }
  current.file = stored.file();
  current.line = stored.line();
  return true;
}

}  // namespace marrowbench::ctl
