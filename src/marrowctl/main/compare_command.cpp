#include <string>

#include "marrowctl/main/commands.h"
#include "marrowctl/main/table_options.h"

namespace marrowbench::ctl {

Outcome runCompare(const CompareCommand& command) {
  TableSource source;
  if (const auto outcome = prepareSource("compare", command.from, source)) return *outcome;
  return impossible("compare", command.oldTables);
}

}  // namespace marrowbench::ctl
