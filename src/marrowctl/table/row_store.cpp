#include "marrowctl/table/row_store.h"

#include <utility>

namespace marrowbench::ctl {
namespace {

constexpr Digits kRepeated = 0;

}  // namespace

std::uint32_t RowStore::addKind(std::string_view key, RowKind kind) {
  const auto index = static_cast<std::uint32_t>(kinds.size());
  kinds.push_back(std::move(kind));
  kindsByKey.emplace(std::string(key), index);
  return index;
}

void RowStore::add(const StoredRow& row, std::uint64_t linesSince,
                   const std::vector<Digits>& numbers) {
  if (rowCount % kRowsOfBlock == 0) {
    endBlock();
    blocks.emplace_back().rows.reserve(kRowsOfBlock);
  }
  blocks.back().rows.push_back(row);
  appendPacked(linesSince, packed);
  const std::size_t sourceNumbers = kinds[row.kind].sourceNumbers;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const bool isRepeated =
        i >= sourceNumbers && i < 2 * sourceNumbers && numbers[i] == numbers[i - sourceNumbers];
    appendPacked(isRepeated ? kRepeated : numbers[i], packed);
  }
  ++rowCount;
}

// Once a block is full, its numbers take no more memory than they need.
void RowStore::endBlock() {
  if (blocks.empty()) return;
  blocks.back().numbers = packed;
  packed.clear();
}

void RowStore::finish() {
  endBlock();
  packed = {};
  kindsByKey = {};
}

bool StoredRowCursor::next() {
  if (nextIndex == store.size()) return false;
  while (currentFile < store.fileEnds.size() && nextIndex == store.fileEnds[currentFile]) {
    ++currentFile;
    currentLine = 0;
  }
  const RowBlock& block = store.blocks[nextIndex / RowStore::kRowsOfBlock];
  const std::size_t inBlock = nextIndex % RowStore::kRowsOfBlock;
  current = &block.rows[inBlock];
  if (unpacks) unpack(block, inBlock);
  ++nextIndex;
  return true;
}

void StoredRowCursor::unpack(const RowBlock& block, std::size_t inBlock) {
  if (inBlock == 0) packed = block.numbers.data();
  currentLine += takePacked(packed);
  const std::size_t sourceNumbers = kind().sourceNumbers;
  unpacked.resize(kind().numbers());
  for (std::size_t i = 0; i < unpacked.size(); ++i) {
    const Digits number = takePacked(packed);
    unpacked[i] = number == kRepeated ? unpacked[i - sourceNumbers] : number;
  }
}

WideValues StoredRowCursor::wide() const {
  const auto found = store.wide.find(index());
  return found == store.wide.end() ? WideValues{} : found->second;
}

std::string StoredRowCursor::source() const {
  const Digits* numbers = unpacked.data();
  return filledShape(kind().source, numbers);
}

std::string StoredRowCursor::dest() const {
  const Digits* numbers = unpacked.data() + kind().sourceNumbers;
  return filledShape(kind().dest, numbers);
}

std::string StoredRowCursor::error() const {
  const Digits* numbers = unpacked.data() + kind().sourceNumbers + kind().destNumbers;
  return filledShape(kind().error, numbers);
}

}  // namespace marrowbench::ctl
