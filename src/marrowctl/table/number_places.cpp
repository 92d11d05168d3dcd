#include "marrowctl/table/number_places.h"

#include <algorithm>

#include "marrowctl/table/number_roles.h"

namespace marrowbench::ctl {
namespace {

bool isWholeToken(std::string_view shape, std::size_t at) {
  return (at == 0 || endsToken(shape[at - 1])) &&
         (at + 1 == shape.size() || endsToken(shape[at + 1]));
}

void appendPlaces(std::string_view shape, std::size_t path, std::vector<NumberPlace>& places) {
  std::size_t token = 0, mark = 0;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (endsToken(shape[i])) {
      ++token;
      mark = 0;
    } else if (shape[i] == kNumberMark) {
      const bool isBehind = i >= 2 && shape[i - 1] == '_' && shape[i - 2] == kNumberMark;
      places.push_back({path, token, mark++, isWholeToken(shape, i), isBehind});
    }
  }
}

}  // namespace

std::vector<NumberPlace> placesOf(const RowKind& kind) {
  std::vector<NumberPlace> places;
  appendPlaces(kind.source, 0, places);
  appendPlaces(kind.dest, 1, places);
  return places;
}

std::string skeletonOf(std::string_view path) {
  std::string separators;
  std::copy_if(path.begin(), path.end(), std::back_inserter(separators), endsToken);
  return separators;
}

std::string keyOf(const Parameters& p) {
  std::string key;
  for (const std::int64_t value :
       {std::int64_t{static_cast<int>(p.method)}, std::int64_t{static_cast<int>(p.type)},
        std::int64_t{p.flush}, std::int64_t{p.preallocate}, p.chunkWaitMs, p.chunkBytes,
        p.systemBuffer, p.fileKib, p.cacheMode}) {
    key += std::to_string(value) + ' ';
  }
  return key;
}

std::vector<KindFamily> familiesOf(const std::vector<RowKind>& kinds) {
  std::map<std::string, std::size_t> known;
  std::vector<KindFamily> families;
  for (std::uint32_t i = 0; i < kinds.size(); ++i) {
    const RowKind& kind = kinds[i];
    const std::string key =
        keyOf(kind.parameters) + skeletonOf(kind.source) + ' ' + skeletonOf(kind.dest);
    const auto [place, isNew] = known.try_emplace(key, families.size());
    if (isNew) families.emplace_back();
    KindFamily& family = families[place->second];
    family.kinds.push_back(i);
    family.iterations = std::max(family.iterations, kind.parameters.iterations);
  }
  return families;
}

}  // namespace marrowbench::ctl
