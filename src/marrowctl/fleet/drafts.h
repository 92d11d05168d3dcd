#ifndef MARROWBENCH_MARROWCTL_FLEET_DRAFTS_H
#define MARROWBENCH_MARROWCTL_FLEET_DRAFTS_H

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace marrowbench::ctl {

/// Files that are to appear at a moment: written beside their places before it, so that only the
/// renaming is left, and a full share is found out in time. What has not appeared goes away again.
/// While drafts lie there nobody else can write any for the same places.
class Drafts {
 public:
  Drafts() = default;
  Drafts(const Drafts&) = delete;
  Drafts& operator=(const Drafts&) = delete;
  ~Drafts();

  /// Writes the drafts. @param texts  by path
  /// @return the problem, with the path in front; empty: none
  [[nodiscard]] std::string write(const std::map<std::string, std::string>& texts);

  /// Puts the files into their places, this one last; its time is that of now. All users may read
  /// them. Where one can't be put there, those before are removed.
  /// @return as write() does
  [[nodiscard]] std::string publish(const std::string& last);

 private:
  struct Draft {
    std::string path, place, text;
  };
  std::vector<Draft> drafts;
};

}  // namespace marrowbench::ctl

#endif
