// Replay of recorded command streams and the block switches.
#include <algorithm>
#include <limits>

#include "common/binary_file.h"
#include "common/runtime_error.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/record_reader.h"

namespace quelo {

namespace {

// Widening is six independent strict comparisons: a first vertex sets both
// ends only when the caller started the box at extreme values.
void Widen(OpenGL_Ctrl& c, Single x, Single y, Single z) {
  if (x > c.FileCoord_xMax) c.FileCoord_xMax = x;
  if (x < c.FileCoord_xMin) c.FileCoord_xMin = x;
  if (y > c.FileCoord_yMax) c.FileCoord_yMax = y;
  if (y < c.FileCoord_yMin) c.FileCoord_yMin = y;
  if (z > c.FileCoord_zMax) c.FileCoord_zMax = z;
  if (z < c.FileCoord_zMin) c.FileCoord_zMin = z;
}

Integer ToInteger(Long v) {
  if (v < std::numeric_limits<Integer>::min() || v > std::numeric_limits<Integer>::max()) {
    Raise(kErrOverflow);
  }
  return static_cast<Integer>(v);
}

}  // namespace

bool OpenGL_Ctrl::auxBlockEnabled(Long LBlockID) const {
  return std::find(disabled_blocks_.begin(), disabled_blocks_.end(), LBlockID) ==
         disabled_blocks_.end();
}

void OpenGL_Ctrl::auxBlockEnabled(Long LBlockID, bool BEnabled) {
  auto& list = disabled_blocks_;
  if (list.empty() && BEnabled) return;
  const auto found = std::find(list.begin(), list.end(), LBlockID);
  if (found == list.end()) {
    if (!BEnabled) list.push_back(LBlockID);
    return;
  }
  if (!BEnabled) return;
  // Enabling overwrites the entry with the last one and keeps the length: the
  // last entry then stands twice, and enabling the last entry itself changes
  // nothing. Programs depend on this exact behaviour, so it stays.
  if (found != list.end() - 1) *found = list.back();
}

void OpenGL_Ctrl::FileReadToGL() {
  BinaryFile& file = Files().Get(FileHnd);
  // A replay that records into the file it reads (SendToFile on) writes each
  // record over the one that follows; judging the end against the length the
  // stream had at the start keeps such a replay from chasing its own output.
  const Long end = file.Length();
  RecordReader reader(file);
  const bool framed = reader.form() == StreamForm::kFramed;
  Long skip_depth = 0;  // open disabled blocks
  Record rec;
  while (reader.Next(rec)) {
    if (rec.position > end) break;
    if (rec.action != RecordAction::kPlay) continue;
    const bool play = skip_depth == 0;
    const auto& l = rec.longs;
    const auto& s = rec.singles;
    const auto& d = rec.doubles;
    switch (rec.op) {
      case kOpBegin:
        if (play) oglBegin(l[0]);
        break;
      case kOpEnd:
        if (play) oglEnd();
        break;
      case kOpColor3f:
        if (play) oglColor3f(s[0], s[1], s[2]);
        break;
      case kOpVertex3f:
        if (play) {
          oglVertex3f(s[0], s[1], s[2]);
          Widen(*this, s[0], s[1], s[2]);
        }
        break;
      case kOpMaterialfv:
        if (play) oglMaterialfv(l[0], l[1], std::span<const Single>(s.data(), 4));
        break;
      case kOpPolygonMode:
        if (play) oglPolygonMode(l[0], l[1]);
        break;
      case kOpFrontFace:
        if (play) oglFrontFace(l[0]);
        break;
      case kOpNormal3f:
        // Normals pass even inside switched-off blocks.
        oglNormal3f(s[0], s[1], s[2]);
        break;
      case kOpEdgeFlag:
        if (play) oglEdgeFlag(l[0] != 0);
        break;
      case kOpColorLong:
        if (play) auxColorLong(l[0]);
        break;
      case kOpTessBeginPoly:
        if (play) tessBeginPoly(ToInteger(l[0]));
        break;
      case kOpTessEndPoly:
        if (play) tessEndPoly();
        break;
      case kOpTessVector3d:
        if (play) {
          tessVector3d(d[0], d[1], d[2]);
          Widen(*this, CheckSingle(d[0]), CheckSingle(d[1]), CheckSingle(d[2]));
        }
        break;
      case kOpTessVector3dv:
        if (play) {
          const double v[4] = {0, d[0], d[1], d[2]};
          tessVector3dv(v);
          Widen(*this, CheckSingle(d[0]), CheckSingle(d[1]), CheckSingle(d[2]));
        }
        break;
      case kOpBlockBegin:
        if (framed && !auxBlockEnabled(l[0])) skip_depth = LongAdd(skip_depth, 1);
        break;
      case kOpBlockEnd:
        if (framed && !auxBlockEnabled(l[0]) && skip_depth > 0) --skip_depth;
        break;
      default:
        break;
    }
  }
}

}  // namespace quelo
