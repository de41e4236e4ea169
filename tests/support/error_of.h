// The run-time error number that a call raises, 0 when it raises none.
#pragma once

#include "common/runtime_error.h"

namespace quelo::testing {

template <typename F>
int ErrorOf(F&& f) {
  try {
    f();
  } catch (const RuntimeError& e) {
    return e.number();
  }
  return 0;
}

}  // namespace quelo::testing
