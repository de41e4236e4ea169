// The drawing vocabulary of a command stream: the seventeen operations, each
// with its code, the control method that records it, the exact payload length
// of its framed record and the layout of that payload.
//
// The writer (record_writer.h), the decoder (record_reader.h), replay, the
// tracing tools and `qgl dump` all read this one table, so a record can only
// mean one thing. The byte layout is written down in docs/file-format.md.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "common/numbers.h"

namespace quelo {

// Operation codes, as written in the op field of a record.
enum Op : Long {
  kOpEndOfSeq = 0,        // FilePutEndOfSeq
  kOpBegin = 1,           // oglBegin
  kOpEnd = 2,             // oglEnd
  kOpColor3f = 3,         // oglColor3f
  kOpVertex3f = 4,        // oglVertex3f
  kOpMaterialfv = 5,      // oglMaterialfv
  kOpPolygonMode = 6,     // oglPolygonMode
  kOpFrontFace = 7,       // oglFrontFace
  kOpNormal3f = 8,        // oglNormal3f
  kOpEdgeFlag = 9,        // oglEdgeFlag
  kOpColorLong = 10,      // auxColorLong
  kOpTessBeginPoly = 11,  // tessBeginPoly
  kOpTessEndPoly = 12,    // tessEndPoly
  kOpTessVector3d = 13,   // tessVector3d
  kOpTessVector3dv = 14,  // tessVector3dv
  kOpBlockBegin = 15,     // auxPutBlockBegin
  kOpBlockEnd = 16,       // auxPutBlockEnd
};

// Number of operations of the framed form (codes 0 .. kOpCount - 1).
inline constexpr Long kOpCount = 17;
// The unframed (legacy) form knows only codes 0 .. kUnframedMaxOp.
inline constexpr Long kUnframedMaxOp = 14;
// Bytes of op and length in front of a framed record's payload.
inline constexpr Long kRecordHeaderSize = 8;

enum class FieldKind { kLong, kSingle, kDouble };

// Bytes that a field of this kind takes in a stream: 4, 4 or 8.
constexpr Long FieldSize(FieldKind kind) {
  return kind == FieldKind::kDouble ? 8 : 4;
}

struct FieldSpec {
  FieldKind kind;
  std::string_view name;  // the recording method's parameter, e.g. "x", "params(0)"
};

// Longest payload in fields (oglMaterialfv: face, pname and four Singles),
// and the most fields of one kind in any payload.
inline constexpr std::size_t kMaxFields = 6;
inline constexpr std::size_t kMaxLongFields = 2;
inline constexpr std::size_t kMaxSingleFields = 4;
inline constexpr std::size_t kMaxDoubleFields = 3;

struct OpSpec {
  Long code;
  std::string_view method;  // e.g. "oglVertex3f"
  Long length;              // exact payload bytes; the only length replay accepts
  std::array<FieldSpec, kMaxFields> field_storage;
  std::size_t field_count;

  std::span<const FieldSpec> fields() const { return {field_storage.data(), field_count}; }
};

// The whole table, indexed by code.
const std::array<OpSpec, kOpCount>& OpTable();

// The entry of a code, or nullptr for a code outside 0..16 (taken as unsigned,
// so negative codes are unknown too).
const OpSpec* FindOp(Long code);

}  // namespace quelo
