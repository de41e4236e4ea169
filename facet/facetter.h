// GLFacetter: triangulates the polygon in TessVertices / TessCornerCount by
// projecting it onto its own plane and clipping ears, and flags each
// triangle's border edges.
#pragma once

#include <vector>

#include "common/numbers.h"

namespace quelo {

struct FacetTriangle {
  Long corner[3] = {0, 0, 0};  // indexes into TessVertices
  Long edge_flags = 0;         // 1: first->second, 2: second->third, 4: third->first on the border
};

// Entries 1..m are the triangles in clipping order; entry 0 is unused.
extern std::vector<FacetTriangle> FacetTriangles;

// Runs the facetter on TessVertices / TessCornerCount. Lowers TessCornerCount
// while clipping. Raises RuntimeError (9 index range, 6/11/5 floating-point
// faults) where the clipper meets them; FacetTriangles then holds what was
// set before the fault.
void RunFacetter();

}  // namespace quelo
