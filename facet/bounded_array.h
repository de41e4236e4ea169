// Arrays with fixed index ranges whose every access is checked, so that an
// index past the bound raises "Subscript out of range" (9) at the very access
// where it happens, as the facetter's failure handling relies on.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

#include "common/numbers.h"
#include "common/runtime_error.h"

namespace quelo {

// A one-dimensional array indexed 0..Upper().
template <typename T>
class BoundedArray {
 public:
  // An array without any entry: every access raises 9.
  BoundedArray() = default;
  // An array 0..upper of default values.
  explicit BoundedArray(Long upper) { Recreate(upper); }

  // Re-dimensions to 0..upper, all entries default; upper < 0 raises 9.
  void Recreate(Long upper) {
    if (upper < 0) Raise(kErrSubscript);
    try {
      values_.assign(static_cast<std::size_t>(upper) + 1, T{});
    } catch (const std::bad_alloc&) {
      Raise(kErrOutOfMemory);
    }
  }

  // The highest valid index; -1 when the array has no entry.
  Long Upper() const { return static_cast<Long>(values_.size()) - 1; }

  // Entry i; i outside 0..Upper() raises 9.
  T& operator()(Long i) { return values_[Checked(i)]; }
  const T& operator()(Long i) const { return values_[Checked(i)]; }

 private:
  // The storage index of i, or error 9.
  std::size_t Checked(Long i) const {
    if (i < 0 || i > Upper()) Raise(kErrSubscript);
    return static_cast<std::size_t>(i);
  }

  std::vector<T> values_;
};

// A two-dimensional array indexed (0..rows_upper, 0..columns_upper).
template <typename T>
class BoundedTable {
 public:
  // A table without any entry: every access raises 9.
  BoundedTable() = default;
  // A table (0..rows_upper, 0..columns_upper) of default values.
  BoundedTable(Long rows_upper, Long columns_upper) { Recreate(rows_upper, columns_upper); }

  // Re-dimensions, all entries default; a negative bound raises 9.
  void Recreate(Long rows_upper, Long columns_upper) {
    if (rows_upper < 0 || columns_upper < 0) Raise(kErrSubscript);
    rows_ = rows_upper + 1;
    columns_ = columns_upper + 1;
    try {
      values_.assign(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_), T{});
    } catch (const std::bad_alloc&) {
      rows_ = columns_ = 0;
      Raise(kErrOutOfMemory);
    }
  }

  // Entry (row, column); either index out of range raises 9.
  T& operator()(Long row, Long column) { return values_[Checked(row, column)]; }
  const T& operator()(Long row, Long column) const { return values_[Checked(row, column)]; }

 private:
  // The storage index of (row, column), or error 9.
  std::size_t Checked(Long row, Long column) const {
    if (row < 0 || row >= rows_ || column < 0 || column >= columns_) Raise(kErrSubscript);
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(column);
  }

  Long rows_ = 0;
  Long columns_ = 0;
  std::vector<T> values_;
};

}  // namespace quelo
