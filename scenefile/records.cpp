#include "scenefile/records.h"

#include <cstdint>
#include <initializer_list>

namespace quelo {

namespace {

using enum FieldKind;

constexpr OpSpec Make(Long code, std::string_view method, Long length,
                      std::initializer_list<FieldSpec> fields) {
  OpSpec spec{code, method, length, {}, 0};
  for (const FieldSpec& f : fields) spec.field_storage[spec.field_count++] = f;
  return spec;
}

constexpr std::array<OpSpec, kOpCount> kTable = {
    Make(kOpEndOfSeq, "FilePutEndOfSeq", 0, {}),
    Make(kOpBegin, "oglBegin", 4, {{kLong, "mode"}}),
    Make(kOpEnd, "oglEnd", 0, {}),
    Make(kOpColor3f, "oglColor3f", 12, {{kSingle, "red"}, {kSingle, "green"}, {kSingle, "blue"}}),
    Make(kOpVertex3f, "oglVertex3f", 12, {{kSingle, "x"}, {kSingle, "y"}, {kSingle, "z"}}),
    Make(kOpMaterialfv, "oglMaterialfv", 24,
         {{kLong, "face"},
          {kLong, "pname"},
          {kSingle, "params(0)"},
          {kSingle, "params(1)"},
          {kSingle, "params(2)"},
          {kSingle, "params(3)"}}),
    Make(kOpPolygonMode, "oglPolygonMode", 8, {{kLong, "face"}, {kLong, "mode"}}),
    Make(kOpFrontFace, "oglFrontFace", 4, {{kLong, "mode"}}),
    Make(kOpNormal3f, "oglNormal3f", 12, {{kSingle, "nx"}, {kSingle, "ny"}, {kSingle, "nz"}}),
    // The flag is stored as a Long, -1 for true and 0 for false.
    Make(kOpEdgeFlag, "oglEdgeFlag", 4, {{kLong, "flag"}}),
    // The packed 0x00BBGGRR Long, not the three channels it is drawn with.
    Make(kOpColorLong, "auxColorLong", 4, {{kLong, "Clr"}}),
    // The method takes a 16-bit count; the record widens it to a Long.
    Make(kOpTessBeginPoly, "tessBeginPoly", 4, {{kLong, "nEck"}}),
    Make(kOpTessEndPoly, "tessEndPoly", 0, {}),
    Make(kOpTessVector3d, "tessVector3d", 24, {{kDouble, "X"}, {kDouble, "Y"}, {kDouble, "z"}}),
    // Elements 1, 2 and 3 of the caller's 1-based array.
    Make(kOpTessVector3dv, "tessVector3dv", 24,
         {{kDouble, "v(1)"}, {kDouble, "v(2)"}, {kDouble, "v(3)"}}),
    Make(kOpBlockBegin, "auxPutBlockBegin", 4, {{kLong, "LBlockID"}}),
    Make(kOpBlockEnd, "auxPutBlockEnd", 4, {{kLong, "LBlockID"}}),
};

// The length column must agree with the layout column.
constexpr bool LengthsMatchLayouts() {
  for (const OpSpec& spec : kTable) {
    Long sum = 0;
    for (std::size_t i = 0; i < spec.field_count; ++i) sum += FieldSize(spec.field_storage[i].kind);
    if (sum != spec.length) return false;
  }
  return true;
}
static_assert(LengthsMatchLayouts());

// Decoded records keep each kind of value in an array of its own.
constexpr bool KindCountsFit() {
  for (const OpSpec& spec : kTable) {
    std::size_t longs = 0, singles = 0, doubles = 0;
    for (std::size_t i = 0; i < spec.field_count; ++i) {
      const FieldKind kind = spec.field_storage[i].kind;
      longs += kind == kLong;
      singles += kind == kSingle;
      doubles += kind == kDouble;
    }
    if (longs > kMaxLongFields || singles > kMaxSingleFields || doubles > kMaxDoubleFields) {
      return false;
    }
  }
  return true;
}
static_assert(KindCountsFit());

}  // namespace

const std::array<OpSpec, kOpCount>& OpTable() {
  return kTable;
}

const OpSpec* FindOp(Long code) {
  const auto u = static_cast<std::uint32_t>(code);
  if (u >= static_cast<std::uint32_t>(kOpCount)) return nullptr;
  return &kTable[u];
}

}  // namespace quelo
