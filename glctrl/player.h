// StreamPlayer: replay of recorded command streams through a recorder and
// polygon members (so that a replay can itself be recorded), with the list of
// switched-off blocks and the box of the coordinates played.
#pragma once

#include <vector>

#include "common/numbers.h"

namespace quelo {

class BinaryFile;
class PolygonMembers;
class StreamRecorder;

// The box around the vertices played. OpenGL_Ctrl exposes it as its own
// public fields; the caller starts it.
struct FileCoordBox {
  Single FileCoord_xMax = 0, FileCoord_xMin = 0;
  Single FileCoord_yMax = 0, FileCoord_yMin = 0;
  Single FileCoord_zMax = 0, FileCoord_zMin = 0;
};

class StreamPlayer {
 public:
  StreamPlayer(StreamRecorder& recorder, PolygonMembers& polygons, FileCoordBox& box)
      : recorder_(recorder), polygons_(polygons), box_(box) {}

  // Plays the stream at the current position of file.
  void Play(BinaryFile& file);

  bool BlockEnabled(Long block_id) const;
  void SetBlockEnabled(Long block_id, bool enabled);
  void ClearDisabledBlocks() { disabled_blocks_.clear(); }
  const std::vector<Long>& DisabledBlocks() const { return disabled_blocks_; }

 private:
  void Widen(Single x, Single y, Single z);

  StreamRecorder& recorder_;
  PolygonMembers& polygons_;
  FileCoordBox& box_;
  std::vector<Long> disabled_blocks_;
};

}  // namespace quelo
