#include "glctrl/player.h"

#include <algorithm>
#include <limits>

#include "common/binary_file.h"
#include "common/runtime_error.h"
#include "glctrl/polygon_members.h"
#include "glctrl/recorder.h"
#include "scenefile/record_reader.h"

namespace quelo {

namespace {

Integer ToInteger(Long v) {
  if (v < std::numeric_limits<Integer>::min() || v > std::numeric_limits<Integer>::max()) {
    Raise(kErrOverflow);
  }
  return static_cast<Integer>(v);
}

}  // namespace

// Widening is six independent strict comparisons: a first vertex sets both
// ends only when the caller started the box at extreme values.
void StreamPlayer::Widen(Single x, Single y, Single z) {
  FileCoordBox& b = box_;
  if (x > b.FileCoord_xMax) b.FileCoord_xMax = x;
  if (x < b.FileCoord_xMin) b.FileCoord_xMin = x;
  if (y > b.FileCoord_yMax) b.FileCoord_yMax = y;
  if (y < b.FileCoord_yMin) b.FileCoord_yMin = y;
  if (z > b.FileCoord_zMax) b.FileCoord_zMax = z;
  if (z < b.FileCoord_zMin) b.FileCoord_zMin = z;
}

bool StreamPlayer::BlockEnabled(Long block_id) const {
  return std::find(disabled_blocks_.begin(), disabled_blocks_.end(), block_id) ==
         disabled_blocks_.end();
}

void StreamPlayer::SetBlockEnabled(Long block_id, bool enabled) {
  auto& list = disabled_blocks_;
  if (list.empty() && enabled) return;
  const auto found = std::find(list.begin(), list.end(), block_id);
  if (found == list.end()) {
    if (!enabled) list.push_back(block_id);
    return;
  }
  if (!enabled) return;
  // Enabling overwrites the entry with the last one and keeps the length: the
  // last entry then stands twice, and enabling the last entry itself changes
  // nothing. Programs depend on this exact behaviour, so it stays.
  if (found != list.end() - 1) *found = list.back();
}

void StreamPlayer::Play(BinaryFile& file) {
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
        if (play) recorder_.Begin(l[0]);
        break;
      case kOpEnd:
        if (play) recorder_.End();
        break;
      case kOpColor3f:
        if (play) recorder_.Color3f(s[0], s[1], s[2]);
        break;
      case kOpVertex3f:
        if (play) {
          recorder_.Vertex3f(s[0], s[1], s[2]);
          Widen(s[0], s[1], s[2]);
        }
        break;
      case kOpMaterialfv:
        if (play) recorder_.Materialfv(l[0], l[1], std::span<const Single>(s.data(), 4));
        break;
      case kOpPolygonMode:
        if (play) recorder_.PolygonMode(l[0], l[1]);
        break;
      case kOpFrontFace:
        if (play) recorder_.FrontFace(l[0]);
        break;
      case kOpNormal3f:
        // Normals pass even inside switched-off blocks.
        recorder_.Normal3f(s[0], s[1], s[2]);
        break;
      case kOpEdgeFlag:
        if (play) recorder_.EdgeFlag(l[0] != 0);
        break;
      case kOpColorLong:
        if (play) recorder_.ColorLong(l[0]);
        break;
      case kOpTessBeginPoly:
        if (play) polygons_.BeginPoly(ToInteger(l[0]));
        break;
      case kOpTessEndPoly:
        if (play) polygons_.EndPoly();
        break;
      case kOpTessVector3d:
        if (play) {
          polygons_.Vector3d(d[0], d[1], d[2]);
          Widen(CheckSingle(d[0]), CheckSingle(d[1]), CheckSingle(d[2]));
        }
        break;
      case kOpTessVector3dv:
        if (play) {
          const double v[4] = {0, d[0], d[1], d[2]};
          polygons_.Vector3dv(v);
          Widen(CheckSingle(d[0]), CheckSingle(d[1]), CheckSingle(d[2]));
        }
        break;
      case kOpBlockBegin:
        if (framed && !BlockEnabled(l[0])) skip_depth = LongAdd(skip_depth, 1);
        break;
      case kOpBlockEnd:
        if (framed && !BlockEnabled(l[0]) && skip_depth > 0) --skip_depth;
        break;
      default:
        break;
    }
  }
}

}  // namespace quelo
