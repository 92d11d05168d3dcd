#include "run/lane_fill.h"

// For processors without vector code of their own.
namespace marrowbench {

LaneFill laneFill256() { return {}; }
LaneFill laneFill512() { return {}; }

}  // namespace marrowbench
