#ifndef MARROWBENCH_MARROWCTL_FLEET_FOLDER_NAMES_H
#define MARROWBENCH_MARROWCTL_FLEET_FOLDER_NAMES_H

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace marrowbench::ctl {

/// Calls `take` with the name of each file in a folder, in no order.
/// @return errno of what failed; those before were taken
[[nodiscard]] int forEachName(const std::string& folder,
                              const std::function<void(const std::string& name)>& take);

/// What was in a folder when it was read.
struct FolderListing {
  std::vector<std::string> names;  ///< in no order; some may be missing where reading failed
  int code = 0;                    ///< errno of what failed
};

/// Folders as they are at one look: each is read once, whoever asks for it.
class FolderListings {
 public:
  /// The next look begins: each is read anew.
  void forget() { listings.clear(); }

  /// The folder's names, read now unless it was read in this look.
  ///
  /// @return valid until forget()
  [[nodiscard]] const FolderListing& of(const std::string& folder);

  /// Makes clients of shares ask the server whether a file is there: they remember that it was not,
  /// and forget it when the folder has changed, which they find out when it is opened. Where the
  /// folder is missing, too, the next one above it that is there is read.
  void renew(const std::string& file);

 private:
  std::map<std::string, FolderListing> listings;
};

}  // namespace marrowbench::ctl

#endif
