#include "scenefile/records.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quelo {
namespace {

struct Expected {
  const char* method;
  Long length;
  const char* layout;  // one letter per field: L Long, S Single, D Double
};

// Typed out from the format's operation table, independently of records.cpp.
constexpr Expected kExpected[] = {
    {"FilePutEndOfSeq", 0, ""},   {"oglBegin", 4, "L"},        {"oglEnd", 0, ""},
    {"oglColor3f", 12, "SSS"},    {"oglVertex3f", 12, "SSS"},  {"oglMaterialfv", 24, "LLSSSS"},
    {"oglPolygonMode", 8, "LL"},  {"oglFrontFace", 4, "L"},    {"oglNormal3f", 12, "SSS"},
    {"oglEdgeFlag", 4, "L"},      {"auxColorLong", 4, "L"},    {"tessBeginPoly", 4, "L"},
    {"tessEndPoly", 0, ""},       {"tessVector3d", 24, "DDD"}, {"tessVector3dv", 24, "DDD"},
    {"auxPutBlockBegin", 4, "L"}, {"auxPutBlockEnd", 4, "L"},
};

TEST(RecordTable, HoldsTheSeventeenOperationsInCodeOrder) {
  ASSERT_EQ(OpTable().size(), 17u);
  for (Long code = 0; code < kOpCount; ++code) {
    const OpSpec& spec = OpTable()[static_cast<std::size_t>(code)];
    const Expected& e = kExpected[code];
    SCOPED_TRACE(e.method);
    EXPECT_EQ(spec.code, code);
    EXPECT_EQ(spec.method, e.method);
    EXPECT_EQ(spec.length, e.length);
    std::string layout;
    for (const FieldSpec& f : spec.fields()) {
      layout += f.kind == FieldKind::kLong ? 'L' : f.kind == FieldKind::kSingle ? 'S' : 'D';
      EXPECT_FALSE(f.name.empty());
    }
    EXPECT_EQ(layout, e.layout);
    EXPECT_EQ(FindOp(code), &spec);
  }
}

TEST(RecordTable, CodesOutsideZeroToSixteenAreUnknown) {
  EXPECT_EQ(FindOp(17), nullptr);
  EXPECT_EQ(FindOp(-1), nullptr);
  EXPECT_EQ(FindOp(std::numeric_limits<Long>::min()), nullptr);
  EXPECT_EQ(FindOp(std::numeric_limits<Long>::max()), nullptr);
  EXPECT_NE(FindOp(16), nullptr);
}

}  // namespace
}  // namespace quelo
