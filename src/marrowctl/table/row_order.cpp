#include "marrowctl/table/row_order.h"

#include <unordered_map>

namespace marrowbench::ctl {
namespace {

// The rows of a family that stand together.
struct Block {
  std::uint32_t site = kNone;
  std::uint32_t name = kNone;
  std::int64_t rows = 0;
};

}  // namespace

RowOrder orderOf(const RowStore& store, const std::vector<Site>& sites,
                 const std::vector<std::size_t>& families,
                 const std::vector<std::uint32_t>& names) {
  RowOrder order;
  std::unordered_map<std::size_t, Block> ofFamily;  // the last block
  std::unordered_map<std::uint64_t, Block> ofName;  // the same of each name in a family
  std::uint32_t file = 0;
  for (StoredRowCursor rows(store, Unpacking::nothing); rows.next();) {
    const std::uint32_t site = rows.row().series;
    const std::uint32_t name = names[site];
    if (rows.file() != file) {
      ofFamily.clear();
      ofName.clear();
      file = rows.file();
    }
    if (name == kNone) continue;
    ++order.rows;
    const std::int64_t iterations = store.kinds[sites[site].kind].parameters.iterations;
    const auto isUnfinished = [iterations](const Block& block) {
      return block.site != kNone && iterations > 1 && block.rows % iterations != 0;
    };
    Block& own = ofName[std::uint64_t{families[site]} << 32U | name];
    Block& last = ofFamily[families[site]];
    if (own.site != site) {
      if (isUnfinished(own)) ++order.inside;
      own = {site, name, 0};
    }
    ++own.rows;
    if (last.name != name) {
      if (isUnfinished(last)) ++order.between;
      last = {site, name, 0};
    }
    last.rows = own.rows;
  }
  return order;
}

}  // namespace marrowbench::ctl
