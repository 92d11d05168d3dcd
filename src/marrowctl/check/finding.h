#ifndef MARROWBENCH_MARROWCTL_CHECK_FINDING_H
#define MARROWBENCH_MARROWCTL_CHECK_FINDING_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

enum class Severity { error, warning, note };

/// A kind of finding: its name, which is stable, and the story behind it for --explain.
struct FindingKind {
  std::string_view name;
  Severity severity;  ///< the usual one; a finding may be milder
  std::string_view explanation;
};

/// Something that check has to say about a plan.
struct Finding {
  std::string name;
  Severity severity = Severity::warning;
  std::string file;
  std::optional<int> line;           ///< none: about the file
  std::optional<int> column;         ///< bytes, from 1
  std::optional<std::string> field;  ///< JSON key of the field it concerns
  std::string message;
  std::string remedy;
  std::string lineText;  ///< for the caret; empty: none
};

}  // namespace marrowbench::ctl

#endif
