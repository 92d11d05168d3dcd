#include "marrowctl/table/row_store.h"

#include <utility>

namespace marrowbench::ctl {

std::uint32_t RowStore::addKind(std::string_view key, RowKind kind) {
  const auto index = static_cast<std::uint32_t>(kinds.size());
  kinds.push_back(std::move(kind));
  kindsByKey.emplace(std::string(key), index);
  return index;
}

void RowStore::add(const StoredRow& row, std::uint64_t linesSince,
                   const std::vector<Digits>& numbers) {
  if (rowCount % kRowsOfBlock == 0) {
    if (!blocks.empty()) blocks.back().numbers.shrink_to_fit();
    blocks.emplace_back().rows.reserve(kRowsOfBlock);
  }
  RowBlock& block = blocks.back();
  block.rows.push_back(row);
  appendPacked(linesSince, block.numbers);
  for (const Digits number : numbers) appendPacked(number, block.numbers);
  ++rowCount;
}

void RowStore::finish() {
  if (!blocks.empty()) blocks.back().numbers.shrink_to_fit();
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
  unpacked.resize(kind().numbers());
  for (Digits& number : unpacked) number = takePacked(packed);
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
