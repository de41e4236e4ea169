#include "scenefile/record_writer.h"

#include "common/runtime_error.h"
#include "scenefile/record_reader.h"
#include "scenefile/records.h"

namespace quelo {

namespace {

void WriteField(BinaryFile& f, Long value) {
  f.WriteLong(value);
}
void WriteField(BinaryFile& f, Single value) {
  f.WriteSingle(value);
}
void WriteField(BinaryFile& f, double value) {
  f.WriteDouble(value);
}

}  // namespace

void WriteRecord(BinaryFile& f, const Record& rec) {
  const OpSpec* spec = FindOp(rec.op);
  if (spec == nullptr) Raise(kErrInvalidCall);  // nothing is written
  f.WriteLong(spec->code);
  f.WriteLong(spec->length);
  VisitFields(*spec, rec, [&f](auto value) { WriteField(f, value); });
}

// The named writers: one record each, through the table.

void WriteEndOfSeqRecord(BinaryFile& f) {
  WriteRecord(f, {.op = kOpEndOfSeq});
}
void WriteBeginRecord(BinaryFile& f, Long mode) {
  WriteRecord(f, {.op = kOpBegin, .longs = {mode}});
}
void WriteEndRecord(BinaryFile& f) {
  WriteRecord(f, {.op = kOpEnd});
}
void WriteColor3fRecord(BinaryFile& f, Single red, Single green, Single blue) {
  WriteRecord(f, {.op = kOpColor3f, .singles = {red, green, blue}});
}
void WriteVertex3fRecord(BinaryFile& f, Single x, Single y, Single z) {
  WriteRecord(f, {.op = kOpVertex3f, .singles = {x, y, z}});
}
void WriteMaterialfvRecord(BinaryFile& f, Long face, Long pname, const Single params[4]) {
  WriteRecord(f, {.op = kOpMaterialfv,
                  .longs = {face, pname},
                  .singles = {params[0], params[1], params[2], params[3]}});
}
void WritePolygonModeRecord(BinaryFile& f, Long face, Long mode) {
  WriteRecord(f, {.op = kOpPolygonMode, .longs = {face, mode}});
}
void WriteFrontFaceRecord(BinaryFile& f, Long mode) {
  WriteRecord(f, {.op = kOpFrontFace, .longs = {mode}});
}
void WriteNormal3fRecord(BinaryFile& f, Single nx, Single ny, Single nz) {
  WriteRecord(f, {.op = kOpNormal3f, .singles = {nx, ny, nz}});
}
void WriteEdgeFlagRecord(BinaryFile& f, bool flag) {
  WriteRecord(f, {.op = kOpEdgeFlag, .longs = {flag ? kTrueLong : 0}});
}
void WriteColorLongRecord(BinaryFile& f, Long packed) {
  WriteRecord(f, {.op = kOpColorLong, .longs = {packed}});
}
void WriteTessBeginPolyRecord(BinaryFile& f, Long count) {
  WriteRecord(f, {.op = kOpTessBeginPoly, .longs = {count}});
}
void WriteTessEndPolyRecord(BinaryFile& f) {
  WriteRecord(f, {.op = kOpTessEndPoly});
}
void WriteTessVector3dRecord(BinaryFile& f, double x, double y, double z) {
  WriteRecord(f, {.op = kOpTessVector3d, .doubles = {x, y, z}});
}
void WriteTessVector3dvRecord(BinaryFile& f, double x, double y, double z) {
  WriteRecord(f, {.op = kOpTessVector3dv, .doubles = {x, y, z}});
}
void WriteBlockBeginRecord(BinaryFile& f, Long block_id) {
  WriteRecord(f, {.op = kOpBlockBegin, .longs = {block_id}});
}
void WriteBlockEndRecord(BinaryFile& f, Long block_id) {
  WriteRecord(f, {.op = kOpBlockEnd, .longs = {block_id}});
}

}  // namespace quelo
