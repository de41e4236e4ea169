#include "facet/polygon_buffer.h"

#include <cstddef>
#include <new>

#include "common/runtime_error.h"

namespace quelo {

PolygonBuffer& SharedPolygonBuffer() {
  static PolygonBuffer buffer;
  return buffer;
}

void TessVertexArray::Recreate(Long n) {
  if (n < 0) Raise(kErrSubscript);
  try {
    values_.assign(4 * (static_cast<std::size_t>(n) + 1), 0.0);
  } catch (const std::bad_alloc&) {
    Raise(kErrOutOfMemory);
  }
  upper_ = n;
}

double& TessVertexArray::operator()(Long component, Long corner) {
  if (component < 0 || component > 3 || corner < 0 || corner > upper_) Raise(kErrSubscript);
  return values_[4 * static_cast<std::size_t>(corner) + static_cast<std::size_t>(component)];
}

double TessVertexArray::operator()(Long component, Long corner) const {
  if (component < 0 || component > 3 || corner < 0 || corner > upper_) Raise(kErrSubscript);
  return values_[4 * static_cast<std::size_t>(corner) + static_cast<std::size_t>(component)];
}

}  // namespace quelo
