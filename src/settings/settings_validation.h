#ifndef MARROWBENCH_SETTINGS_SETTINGS_VALIDATION_H
#define MARROWBENCH_SETTINGS_SETTINGS_VALIDATION_H

#include "settings/test_config.h"

namespace marrowbench {

/// Makes the parameters of a parsed test line fit its method and kind of test: what the method
/// can't do is switched off, what it needs gets a default. Nothing is refused and nothing is
/// printed; the results table shows the values that were used.
///
/// @param config  method, parameters and path templates are read, parameters are written
void validate(TestConfig& config);

}  // namespace marrowbench

#endif
