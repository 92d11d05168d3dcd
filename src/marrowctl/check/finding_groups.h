#ifndef MARROWBENCH_MARROWCTL_CHECK_FINDING_GROUPS_H
#define MARROWBENCH_MARROWCTL_CHECK_FINDING_GROUPS_H

#include "marrowctl/check/finding_list.h"
#include "marrowctl/check/survey.h"
#include "marrowctl/plan/totals.h"

/// Each group adds what it finds, in any order.
namespace marrowbench::ctl {

/// Lines that are refused, cut or not run, and fields that read as something else.
void addLineFindings(const Survey& survey, FindingList& findings);
/// Which file comes next, and which one never.
void addChainFindings(const Survey& survey, FindingList& findings);
/// Numbers that become others.
void addNumberFindings(const Survey& survey, FindingList& findings);
/// Settings that do nothing, tests that measure nothing, markers that never come.
void addEffectFindings(const Survey& survey, FindingList& findings);
/// The text of paths: length, placeholders, commas.
void addPathFindings(const Survey& survey, FindingList& findings);
/// Folders that are not made.
void addFolderFindings(const Survey& survey, FindingList& findings);
/// Which line writes which file, and who reads it.
void addDataFindings(const Survey& survey, FindingList& findings);
/// Where rows and logs go.
void addTableFindings(const Survey& survey, FindingList& findings);
/// What does not fit on a disk, or is not known to.
void addSizeFindings(const Survey& survey, const Totals& totals, FindingList& findings);
/// Names in allow-comments that are none.
void addAllowFindings(const Survey& survey, FindingList& findings);

}  // namespace marrowbench::ctl

#endif
