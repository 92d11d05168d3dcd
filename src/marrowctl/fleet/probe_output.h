#ifndef MARROWBENCH_MARROWCTL_FLEET_PROBE_OUTPUT_H
#define MARROWBENCH_MARROWCTL_FLEET_PROBE_OUTPUT_H

#include <string>

#include "marrowctl/fleet/probe.h"
#include "marrowctl/support/terminal.h"

/// What a probe has found. All are whole texts that end in a line feed.
namespace marrowbench::ctl {

/// For a person: the figures, then the verdict with its reasons and what helps.
[[nodiscard]] std::string probeText(const Probe& probe, const ProbeJudgement& judgement,
                                    const TextStyle& style);

/// The verdict and its reasons alone.
[[nodiscard]] std::string probeVerdictText(const ProbeJudgement& judgement, const TextStyle& style);

/// One document, schema marrowctl.probe/1: docs/schemas/probe.schema.json.
[[nodiscard]] std::string probeJson(const Probe& probe, const ProbeJudgement& judgement);

}  // namespace marrowbench::ctl

#endif
