#include "marrowctl/report/page/page_assets.h"

namespace marrowbench::ctl {

PageAssets pageAssets() { return {}; }

}  // namespace marrowbench::ctl
