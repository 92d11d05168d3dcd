#include "marrowctl/table/row_order.h"

#include <algorithm>
#include <unordered_map>

namespace marrowbench::ctl {
namespace {

// The rows of a family that stand together in a file.
struct Block {
  std::uint32_t file = kNone;
  std::uint32_t site = kNone;
  std::uint32_t name = kNone;
  std::int64_t rows = 0;
};

// Of blocks that are kept from row to row; what is left of another file counts as none.
Block& blockIn(std::vector<Block>& blocks, std::size_t index, std::uint32_t file) {
  Block& block = blocks[index];
  if (block.file != file) block = {file, kNone, kNone, 0};
  return block;
}

// Numbers the names of each family, from 0. @return the number of each site
std::vector<std::size_t> numbered(const std::vector<std::size_t>& families,
                                  const std::vector<std::uint32_t>& names) {
  std::unordered_map<std::uint64_t, std::size_t> known;
  std::vector<std::size_t> ofSite;
  for (std::size_t i = 0; i < families.size(); ++i) {
    const std::uint64_t key = std::uint64_t{families[i]} << 32U | names[i];
    ofSite.push_back(known.try_emplace(key, known.size()).first->second);
  }
  return ofSite;
}

// How many a list of numbers from 0 has.
std::size_t countOf(const std::vector<std::size_t>& numbers) {
  return numbers.empty() ? 0 : *std::max_element(numbers.begin(), numbers.end()) + 1;
}

}  // namespace

RowOrder orderOf(const RowStore& store, const std::vector<Site>& sites,
                 const std::vector<std::size_t>& families,
                 const std::vector<std::uint32_t>& names) {
  RowOrder order;
  const std::vector<std::size_t> nameOfSite = numbered(families, names);
  std::vector<Block> ofFamily(countOf(families));  // the last block
  std::vector<Block> ofName(countOf(nameOfSite));  // the same of each name in a family
  for (StoredRowCursor rows(store, Unpacking::nothing); rows.next();) {
    const std::uint32_t site = rows.row().series;
    const std::uint32_t name = names[site];
    if (name == kNone) continue;
    ++order.rows;
    const auto isUnfinished = [&](const Block& block) {
      if (block.site == kNone) return false;
      const std::int64_t iterations = store.kinds[sites[block.site].kind].parameters.iterations;
      return iterations > 1 && block.rows % iterations != 0;
    };
    Block& own = blockIn(ofName, nameOfSite[site], rows.file());
    Block& last = blockIn(ofFamily, families[site], rows.file());
    if (own.site != site) {
      if (isUnfinished(own)) ++order.inside;
      own = {rows.file(), site, name, 0};
    }
    ++own.rows;
    if (last.name != name) {
      if (isUnfinished(last)) ++order.between;
      last = {rows.file(), site, name, 0};
    }
    last.rows = own.rows;
  }
  return order;
}

}  // namespace marrowbench::ctl
