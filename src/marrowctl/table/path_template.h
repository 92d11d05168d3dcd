#ifndef MARROWBENCH_MARROWCTL_TABLE_PATH_TEMPLATE_H
#define MARROWBENCH_MARROWCTL_TABLE_PATH_TEMPLATE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// What stood for the placeholders of a template in a path.
struct TemplateMatch {
  std::string_view host;  ///< empty: the template has none
  /// Where iterations and dates stand: position and length.
  std::vector<std::pair<std::size_t, std::size_t>> iterations, dates;
  std::size_t folder = 0;  ///< length of what stands for the folder that fits any text
};

/// A path of a settings line, to be found again in rows. Clients mount the share elsewhere: the
/// settings file's folder and "[temp]" fit any text.
class PathTemplate {
 public:
  /// A template of memory.
  PathTemplate() = default;

  /// @param pathTemplate  as PlannedTest has it; empty: memory
  /// @param isData        a source or destination, which the program expands twice
  PathTemplate(const PlannedFile& file, const PlannedTest& test, const std::string& pathTemplate,
               bool isData);

  /// Compares a path with the template, from their ends. In the path "[iter]" and "[date]" may
  /// stand in place of numbers. @return nothing when it does not fit
  [[nodiscard]] std::optional<TemplateMatch> match(std::string_view path) const;

  /// The same for the names of the files alone.
  [[nodiscard]] std::optional<TemplateMatch> matchName(std::string_view path) const;

  /// How much of a path fits: the literal characters of the file's name and of as many folders in
  /// front of it as fit, one more, and one more if all does. 0: not even the name does.
  [[nodiscard]] std::size_t fittingTail(std::string_view path) const;

  /// True for the path of this client and this iteration.
  ///
  /// @param iteration  from 0
  [[nodiscard]] bool isPathOf(std::string_view host, std::int32_t iteration,
                              std::string_view path) const;

  [[nodiscard]] bool hasHost() const;

  /// Characters that must stand in a path as they are: of several templates that fit, the one with
  /// the most is meant.
  [[nodiscard]] std::size_t literals() const;

  /// For people and for comparing: "/data/[host]_[iter].bin", or "MEMORY".
  [[nodiscard]] std::string shown() const;

  bool operator==(const PathTemplate&) const = default;

 private:
  std::string marked;  // placeholders are characters below blank; empty: memory
};

}  // namespace marrowbench::ctl

#endif
