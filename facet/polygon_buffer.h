// The polygon buffer: the polygon members of every control fill the one
// shared buffer, the facetter reads it and lowers its corner count.
#pragma once

#include <vector>

#include "common/numbers.h"

namespace quelo {

// TessVertices(component 0..3, corner 0..n): components 1..3 are x, y, z;
// corner 0 receives a copy of corner n when the polygon is closed.
class TessVertexArray {
 public:
  // Re-dimensions to (0..3, 0..n), all zero. n < 0 raises 9.
  void Recreate(Long n);
  // The highest corner index; -1 before the first Recreate.
  Long Upper() const { return upper_; }
  // Out-of-range indexes raise 9 (Subscript out of range).
  double& operator()(Long component, Long corner);
  double operator()(Long component, Long corner) const;

 private:
  Long upper_ = -1;
  std::vector<double> values_;
};

struct PolygonBuffer {
  TessVertexArray vertices;
  Integer corner_count = 0;  // corners announced; lowered by the facetter as it clips
};

// The one buffer of the program, shared by every control: a polygon begun by
// one control can be continued and ended by another.
PolygonBuffer& SharedPolygonBuffer();

}  // namespace quelo
