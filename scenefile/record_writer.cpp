#include "scenefile/record_writer.h"

#include <cassert>

#include "scenefile/record_reader.h"
#include "scenefile/records.h"

namespace quelo {

namespace {

// Op and the table's length: every writer starts so.
void Head(BinaryFile& f, Long op) {
  f.WriteLong(op);
  f.WriteLong(OpTable()[static_cast<std::size_t>(op)].length);
}

}  // namespace

void WriteEndOfSeqRecord(BinaryFile& f) {
  Head(f, kOpEndOfSeq);
}

void WriteBeginRecord(BinaryFile& f, Long mode) {
  Head(f, kOpBegin);
  f.WriteLong(mode);
}

void WriteEndRecord(BinaryFile& f) {
  Head(f, kOpEnd);
}

void WriteColor3fRecord(BinaryFile& f, Single red, Single green, Single blue) {
  Head(f, kOpColor3f);
  f.WriteSingle(red);
  f.WriteSingle(green);
  f.WriteSingle(blue);
}

void WriteVertex3fRecord(BinaryFile& f, Single x, Single y, Single z) {
  Head(f, kOpVertex3f);
  f.WriteSingle(x);
  f.WriteSingle(y);
  f.WriteSingle(z);
}

void WriteMaterialfvRecord(BinaryFile& f, Long face, Long pname, const Single params[4]) {
  Head(f, kOpMaterialfv);
  f.WriteLong(face);
  f.WriteLong(pname);
  for (int i = 0; i < 4; ++i) f.WriteSingle(params[i]);
}

void WritePolygonModeRecord(BinaryFile& f, Long face, Long mode) {
  Head(f, kOpPolygonMode);
  f.WriteLong(face);
  f.WriteLong(mode);
}

void WriteFrontFaceRecord(BinaryFile& f, Long mode) {
  Head(f, kOpFrontFace);
  f.WriteLong(mode);
}

void WriteNormal3fRecord(BinaryFile& f, Single nx, Single ny, Single nz) {
  Head(f, kOpNormal3f);
  f.WriteSingle(nx);
  f.WriteSingle(ny);
  f.WriteSingle(nz);
}

void WriteEdgeFlagRecord(BinaryFile& f, bool flag) {
  Head(f, kOpEdgeFlag);
  f.WriteLong(flag ? kTrueLong : 0);
}

void WriteColorLongRecord(BinaryFile& f, Long packed) {
  Head(f, kOpColorLong);
  f.WriteLong(packed);
}

void WriteTessBeginPolyRecord(BinaryFile& f, Long count) {
  Head(f, kOpTessBeginPoly);
  f.WriteLong(count);
}

void WriteTessEndPolyRecord(BinaryFile& f) {
  Head(f, kOpTessEndPoly);
}

void WriteTessVector3dRecord(BinaryFile& f, double x, double y, double z) {
  Head(f, kOpTessVector3d);
  f.WriteDouble(x);
  f.WriteDouble(y);
  f.WriteDouble(z);
}

void WriteTessVector3dvRecord(BinaryFile& f, double x, double y, double z) {
  Head(f, kOpTessVector3dv);
  f.WriteDouble(x);
  f.WriteDouble(y);
  f.WriteDouble(z);
}

void WriteBlockBeginRecord(BinaryFile& f, Long block_id) {
  Head(f, kOpBlockBegin);
  f.WriteLong(block_id);
}

void WriteBlockEndRecord(BinaryFile& f, Long block_id) {
  Head(f, kOpBlockEnd);
  f.WriteLong(block_id);
}

void WriteRecord(BinaryFile& f, const Record& rec) {
  const OpSpec* spec = FindOp(rec.op);
  assert(spec != nullptr);
  Head(f, spec->code);
  std::size_t li = 0, si = 0, di = 0;
  for (const FieldSpec& field : spec->fields()) {
    switch (field.kind) {
      case FieldKind::kLong:
        f.WriteLong(rec.longs[li++]);
        break;
      case FieldKind::kSingle:
        f.WriteSingle(rec.singles[si++]);
        break;
      case FieldKind::kDouble:
        f.WriteDouble(rec.doubles[di++]);
        break;
    }
  }
}

}  // namespace quelo
