#ifndef MARROWBENCH_MARROWCTL_TABLE_ROW_STORE_H
#define MARROWBENCH_MARROWCTL_TABLE_ROW_STORE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "marrowctl/table/parameters.h"
#include "marrowctl/table/path_shape.h"

/// Rows in forty bytes each: ten million fit into the memory of any machine.
namespace marrowbench::ctl {

/// What rows of the same parameters and shapes of texts share.
struct RowKind {
  Parameters parameters;
  std::string source, dest, error;  ///< shapes; source and dest may be "MEMORY"
  std::size_t sourceNumbers = 0, destNumbers = 0, errorNumbers = 0;
  [[nodiscard]] std::size_t numbers() const { return sourceNumbers + destNumbers + errorNumbers; }
};

/// Bits of StoredRow::flags.
enum RowFlag : std::uint16_t {
  isJudged = 1,        ///< of a run that is judged
  nullLookedFor = 2,   ///< and none found, unless hasNullData
  hasNullData = 4,     ///< its position is in RowStore::wide
  hasNoSpeed = 8,      ///< there was no time to divide by
  hasWidePercent = 16  ///< the percentage is in RowStore::wide
};

struct StoredRow {
  std::uint32_t end = 0;  ///< seconds since the epoch; while a file is read: its date, see RowDate
  std::uint32_t milliseconds = 0;
  std::uint32_t kibPerSecond = 0;
  std::uint32_t kind = 0;
  std::uint32_t series = 0;
  std::int32_t iteration = 0;
  std::int16_t percent = 0;
  std::uint16_t flags = 0;
};
static_assert(sizeof(StoredRow) == 28);

/// Values of a row that are too large for where most rows have them.
struct WideValues {
  std::int64_t nullPosition = -1;
  std::int64_t percent = 0;
};

/// Rows that stand together.
struct RowBlock {
  std::vector<StoredRow> rows;
  /// For each row the lines since the row before it and the numbers of its texts. 0 repeats the
  /// number at that place of the source: copies have most in both of their paths.
  std::vector<std::uint8_t> numbers;
};

class RowStore {
 public:
  static constexpr std::size_t kRowsOfBlock = 16384;

  /// Index of the kind with this key, null for none yet. Stays where it is.
  [[nodiscard]] const std::uint32_t* findKind(std::string_view key) const {
    const auto known = kindsByKey.find(key);
    return known == kindsByKey.end() ? nullptr : &known->second;
  }
  std::uint32_t addKind(std::string_view key, RowKind kind);

  /// @param linesSince  lines from the row before it in the file, from line 0 for the first one
  /// @param numbers     of source, dest and error, as its kind has marks
  void add(const StoredRow& row, std::uint64_t linesSince, const std::vector<Digits>& numbers);

  /// Of the row that was added last.
  void setWide(const WideValues& values) { wide[rowCount - 1] = values; }

  /// Ends the file whose rows were added since the last call.
  void endFile() { fileEnds.push_back(rowCount); }

  /// Behind the last row, before any is unpacked. Gives back what only adding takes.
  void finish();

  [[nodiscard]] std::uint64_t size() const { return rowCount; }
  [[nodiscard]] StoredRow& at(std::uint64_t index) {
    return blocks[index / kRowsOfBlock].rows[index % kRowsOfBlock];
  }
  [[nodiscard]] const StoredRow& at(std::uint64_t index) const {
    return blocks[index / kRowsOfBlock].rows[index % kRowsOfBlock];
  }

  std::vector<RowKind> kinds;
  std::vector<RowBlock> blocks;
  std::vector<std::uint64_t> fileEnds;  ///< for each file the number of rows up to its end
  std::unordered_map<std::uint64_t, WideValues> wide;  ///< by the number of the row

 private:
  void endBlock();

  struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> kindsByKey;
  std::vector<std::uint8_t> packed;  // numbers of the block that is being filled
  std::uint64_t rowCount = 0;
};

/// Whether a cursor unpacks the lines and numbers of rows, which takes most of its time.
enum class Unpacking { all, nothing };

/// Walks over the rows of a store in the order in which they were added.
class StoredRowCursor {
 public:
  explicit StoredRowCursor(const RowStore& rowStore, Unpacking unpacking = Unpacking::all)
      : store(rowStore), unpacks(unpacking == Unpacking::all) {}

  /// Steps to the first or next row. @return false behind the last one
  bool next();

  [[nodiscard]] const StoredRow& row() const { return *current; }
  [[nodiscard]] const RowKind& kind() const { return store.kinds[current->kind]; }
  [[nodiscard]] std::uint64_t index() const { return nextIndex - 1; }
  [[nodiscard]] std::uint32_t file() const { return currentFile; }
  [[nodiscard]] std::uint64_t line() const { return currentLine; }  ///< 0: nothing is unpacked
  [[nodiscard]] WideValues wide() const;

  /// The numbers of source, dest and error; none where nothing is unpacked.
  [[nodiscard]] const std::vector<Digits>& numbers() const { return unpacked; }

  [[nodiscard]] std::string source() const;
  [[nodiscard]] std::string dest() const;
  [[nodiscard]] std::string error() const;

 private:
  void unpack(const RowBlock& block, std::size_t inBlock);

  const RowStore& store;
  const bool unpacks;
  const StoredRow* current = nullptr;
  const std::uint8_t* packed = nullptr;  // of the next row
  std::vector<Digits> unpacked;
  std::uint64_t nextIndex = 0;
  std::uint64_t currentLine = 0;
  std::uint32_t currentFile = 0;
};

}  // namespace marrowbench::ctl

#endif
