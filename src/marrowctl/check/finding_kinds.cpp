#include "marrowctl/check/finding_kinds.h"

#include "marrowctl/check/check.h"

namespace marrowbench::ctl {

const std::vector<FindingKind>& findingKinds() {
  static const std::vector<FindingKind> kinds = [] {
    std::vector<FindingKind> all;
    for (const auto part :
         {kindsAboutLines(), kindsAboutFiles(), kindsAboutNumbers(), kindsAboutFleets()}) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }();
  return kinds;
}

}  // namespace marrowbench::ctl
