// The one polygon buffer of the whole program, shared by every control: the
// polygon members fill it, the facetter reads it and lowers the corner count.
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

extern TessVertexArray TessVertices;
extern Integer TessCornerCount;

}  // namespace quelo
