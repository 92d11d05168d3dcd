#ifndef MARROWBENCH_MARROWCTL_TABLE_HOST_NAMES_H
#define MARROWBENCH_MARROWCTL_TABLE_HOST_NAMES_H

#include <string>
#include <vector>

#include "marrowctl/table/number_roles.h"
#include "marrowctl/table/result_set.h"
#include "marrowctl/table/sites.h"

/// Each sets Site::host where it can, and puts "[host]" into the site's paths in its place.
namespace marrowbench::ctl {

/// What is wrong with a regular expression; empty: nothing.
[[nodiscard]] std::string problemOfPattern(const std::string& pattern);

/// The numbers in the first group of a regular expression: part of a client's name, not iterations.
[[nodiscard]] KnownTexts numbersInPattern(const std::string& pattern, const RowStore& store);

/// The same of the names of a list.
[[nodiscard]] KnownTexts numbersInList(const std::vector<std::string>& names,
                                       const RowStore& store);

/// The first group of a regular expression, tried on dest, source and the table's file name.
void takeHostsByPattern(const std::string& pattern, const std::vector<ResultFile>& files,
                        std::vector<Site>& sites);

/// A name of the list that stands in dest, source or, with several tables, the table's path, with
/// neither a letter nor a digit beside it. The longest counts.
void takeHostsByList(const std::vector<std::string>& names, const std::vector<ResultFile>& files,
                     std::vector<Site>& sites);

/// The token of the tables' paths, else of source and dest, by which clients differ: rows of each
/// of its values follow one another, and those of different ones do not take turns.
///
/// @param store  whose rows still have the indices of their sites
void takeHostsByTokens(const std::vector<ResultFile>& files, const RowStore& store,
                       std::vector<Site>& sites);

/// The text with "[host]" for each of the names that stands in it as takeHostsByList() sees it.
[[nodiscard]] std::string withoutHosts(const std::string& text,
                                       const std::vector<std::string>& names);

}  // namespace marrowbench::ctl

#endif
