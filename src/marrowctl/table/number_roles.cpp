#include "marrowctl/table/number_roles.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>

#include "marrowctl/table/number_places.h"
#include "marrowctl/table/row_dates.h"

namespace marrowbench::ctl {
namespace {

// Enough to see how a number goes on from row to row.
constexpr std::uint64_t kRowsLookedAt = 100'000;
constexpr double kMostBreaks = 0.1;
constexpr std::size_t kMostCandidates = 64;
constexpr Digits kZero = 10;                // the digits "0"
constexpr std::int64_t kTwoDays = 172'800;  // seconds

using PlaceKey = std::tuple<std::size_t, std::size_t, std::size_t>;

// The numbers of a kind over all its rows.
struct Range {
  Digits first = 0, least = UINT64_MAX, most = 0;
  bool hasLeadingZero = false;
};

struct KindNumbers {
  std::vector<NumberPlace> places;
  std::vector<Range> ranges;
  std::uint64_t hashOfPaths = 0;
  std::int64_t firstEnd = 0;  // of its first row
};

bool hasLength(const Range& range, Digits least) {
  return range.least >= least && range.most < 2 * least;
}

// "[date]" is month, day, hour, minute and the tens of the seconds, of when the row began.
bool isDateOf(const Range& front, const Range& back, std::int64_t end) {
  if (!hasLength(front, 10000) || !hasLength(back, 100000)) return false;
  const auto day = static_cast<unsigned>(front.first - 10000);
  const auto time = static_cast<unsigned>(back.first - 100000);
  const unsigned month = day / 100, minute = time / 10 % 100, hour = time / 1000;
  if (month < 1 || month > 12 || day % 100 < 1 || day % 100 > 31 || hour > 23 || minute > 59) {
    return false;
  }
  const RowDate date = month << 22U | day % 100 << 17U | hour << 12U | minute << 6U;
  return YearFinder(end).timeOf(date) > end - kTwoDays;
}

// How a place of a family looks as one of the iteration.
struct Candidate {
  NumberPlace place;
  std::int64_t most = 0;
  bool beginsAtZero = false;
  std::uint64_t steps = 0, breaks = 0;
  std::size_t index = 0;          // among the candidates of the family
  std::uint64_t differsFrom = 0;  // bits of those that had another value in some row
  [[nodiscard]] double breakShare() const {
    return steps == 0 ? 0.0 : static_cast<double>(breaks) / static_cast<double>(steps);
  }
};

class RoleFinder {
 public:
  RoleFinder(const RowStore& rowStore, const KnownTexts& knownTexts)
      : store(rowStore),
        texts(knownTexts),
        numbers(rowStore.kinds.size()),
        roles(rowStore.kinds.size()) {}

  NumberRoles find() {
    collect();
    setDates();
    families = familiesOf(store.kinds);
    familyOfKind.resize(store.kinds.size());
    for (std::uint32_t i = 0; i < families.size(); ++i) {
      for (const std::uint32_t kind : families[i].kinds) familyOfKind[kind] = i;
      candidates.push_back(candidatesOf(families[i]));
    }
    watch();
    for (std::size_t i = 0; i < families.size(); ++i) choose(families[i], candidates[i]);
    return std::move(roles);
  }

 private:
  void collect() {
    const std::hash<std::string> hashOf;
    for (std::size_t i = 0; i < store.kinds.size(); ++i) {
      const RowKind& kind = store.kinds[i];
      numbers[i].hashOfPaths = hashOf(kind.source) ^ hashOf(kind.dest) * 3;
      numbers[i].places = placesOf(kind);
      numbers[i].ranges.resize(numbers[i].places.size());
      roles[i].resize(numbers[i].places.size(), NumberRole::text);
    }
    for (StoredRowCursor rows(store); rows.next();) {
      KindNumbers& kind = numbers[rows.row().kind];
      if (kind.firstEnd == 0) kind.firstEnd = rows.row().end;
      for (std::size_t i = 0; i < kind.ranges.size(); ++i) widen(kind.ranges[i], rows.numbers()[i]);
    }
  }

  static void widen(Range& range, Digits number) {
    if (range.most == 0) range.first = number;
    if (number >= range.least && number <= range.most) return;
    range.least = std::min(range.least, number);
    range.most = std::max(range.most, number);
    range.hasLeadingZero = range.hasLeadingZero || hasLeadingZero(number);
  }

  void setDates() {
    for (std::size_t k = 0; k < numbers.size(); ++k) {
      const KindNumbers& kind = numbers[k];
      for (std::size_t i = 1; i < kind.places.size(); ++i) {
        const bool isDate = kind.places[i].followsUnderscore &&
                            isDateOf(kind.ranges[i - 1], kind.ranges[i], kind.firstEnd);
        if (isDate) roles[k][i - 1] = roles[k][i] = NumberRole::date;
      }
    }
  }

  std::vector<Candidate> candidatesOf(const KindFamily& family) {
    std::map<PlaceKey, std::pair<bool, Candidate>> found;
    if (family.iterations < 2) return {};
    for (const std::uint32_t k : family.kinds) {
      for (std::size_t i = 0; i < numbers[k].places.size(); ++i) {
        const Range& range = numbers[k].ranges[i];
        auto& [isPossible, candidate] =
            found.try_emplace(keyOfPlace(numbers[k].places[i]), true, Candidate{}).first->second;
        candidate.place = numbers[k].places[i];
        const std::int64_t most = range.most < 10 ? 0 : valueOf(range.most);
        const bool isText = !texts.empty() && texts[k][i];
        isPossible = isPossible && roles[k][i] == NumberRole::text && !isText &&
                     !range.hasLeadingZero && most < family.iterations;
        candidate.most = std::max(candidate.most, most);
        candidate.beginsAtZero = candidate.beginsAtZero || range.least == kZero;
      }
    }
    std::vector<Candidate> result;
    for (const auto& [place, entry] : found) {
      const auto& [isPossible, candidate] = entry;
      const bool counts = isPossible && candidate.beginsAtZero && candidate.most > 0;
      if (!counts || result.size() == kMostCandidates) continue;
      result.push_back(candidate);
      result.back().index = result.size() - 1;
    }
    return result;
  }

  // Where it stands; kinds of one family may differ in what stands around it.
  static PlaceKey keyOfPlace(const NumberPlace& place) {
    return {place.path, place.token, place.mark};
  }

  static std::size_t indexOf(const KindNumbers& kind, const NumberPlace& place) {
    std::size_t i = 0;
    while (i < kind.places.size() && keyOfPlace(kind.places[i]) != keyOfPlace(place)) ++i;
    return i;
  }

  // Sees each candidate go on from row to row where all else stays as it is.
  void watch() {
    StoredRowCursor rows(store);
    for (std::uint64_t seen = 0; seen < kRowsLookedAt && rows.next(); ++seen) {
      const std::uint32_t family = familyOfKind[rows.row().kind];
      for (Candidate& candidate : candidates[family]) watchOne(rows, family, candidate);
    }
    lastValues.clear();
  }

  void watchOne(const StoredRowCursor& rows, std::uint32_t family, Candidate& candidate) {
    const KindNumbers& kind = numbers[rows.row().kind];
    const std::size_t i = indexOf(kind, candidate.place);
    if (i == kind.places.size()) return;
    const Digits number = rows.numbers()[i];
    step(candidate, number, groupOf(rows, family * kMostCandidates + candidate.index, i),
         families[family].iterations);
    for (const Candidate& other : candidates[family]) {
      const std::size_t j = indexOf(kind, other.place);
      const bool isSame = j < kind.places.size() && rows.numbers()[j] == number;
      if (!isSame) candidate.differsFrom |= std::uint64_t{1} << other.index;
    }
  }

  std::uint64_t groupOf(const StoredRowCursor& rows, std::uint64_t seed, std::size_t except) {
    std::uint64_t hash = seed;
    const auto mix = [&hash](std::uint64_t value) {
      hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 29U;
    };
    mix(rows.file());
    const RowKind& kind = rows.kind();
    const std::size_t count = kind.sourceNumbers + kind.destNumbers;
    for (std::size_t i = 0; i < count; ++i) {
      // A copy has the iteration in both of its paths.
      const bool counts = roles[rows.row().kind][i] != NumberRole::date &&
                          rows.numbers()[i] != rows.numbers()[except];
      if (counts) mix(rows.numbers()[i] * 64 + i);
    }
    mix(numbers[rows.row().kind].hashOfPaths);
    return hash;
  }

  void step(Candidate& candidate, Digits number, std::uint64_t group, std::int64_t iterations) {
    const std::int64_t value = valueOf(number);
    const auto [last, isNew] = lastValues.try_emplace(group, value);
    if (isNew) return;
    ++candidate.steps;
    // From the last one on it begins again: in a later run.
    const bool goesOn = value > last->second || (value == 0 && last->second == iterations - 1);
    if (!goesOn) ++candidate.breaks;
    last->second = value;
  }

  void choose(const KindFamily& family, std::vector<Candidate>& possible) {
    const auto isBetter = [](const Candidate& a, const Candidate& b) {
      if (a.breakShare() != b.breakShare()) return a.breakShare() < b.breakShare();
      if (a.place.fillsToken != b.place.fillsToken) return a.place.fillsToken;
      return keyOfPlace(a.place) > keyOfPlace(b.place);
    };
    std::sort(possible.begin(), possible.end(), isBetter);
    const bool isFound = !possible.empty() && (possible[0].breakShare() <= kMostBreaks ||
                                               possible[0].most == family.iterations - 1);
    if (!isFound) return;
    for (const Candidate& candidate : possible) {
      // A copy has the iteration in its source and in its destination.
      const bool isIteration = (possible[0].differsFrom >> candidate.index & 1U) == 0;
      if (isIteration) setIteration(family, candidate.place);
    }
  }

  void setIteration(const KindFamily& family, const NumberPlace& place) {
    for (const std::uint32_t k : family.kinds) {
      const std::size_t i = indexOf(numbers[k], place);
      if (i < roles[k].size()) roles[k][i] = NumberRole::iteration;
    }
  }

  const RowStore& store;
  const KnownTexts& texts;
  std::vector<KindNumbers> numbers;
  NumberRoles roles;
  std::vector<KindFamily> families;
  std::vector<std::uint32_t> familyOfKind;
  std::vector<std::vector<Candidate>> candidates;  // of each family
  std::unordered_map<std::uint64_t, std::int64_t> lastValues;
};

}  // namespace

NumberRoles rolesOf(const RowStore& store, const KnownTexts& texts) {
  return RoleFinder(store, texts).find();
}

}  // namespace marrowbench::ctl
