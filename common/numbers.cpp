#include "common/numbers.h"

#include <cfenv>
#include <cmath>
#include <limits>

#include "common/runtime_error.h"

namespace quelo {

namespace {

template <typename T>
T RoundChecked(double v) {
  if (std::isnan(v)) Raise(kErrOverflow);
  // nearbyint follows the current rounding mode, which is to-nearest-even.
  const double r = std::nearbyint(v);
  if (r < static_cast<double>(std::numeric_limits<T>::min()) ||
      r > static_cast<double>(std::numeric_limits<T>::max())) {
    Raise(kErrOverflow);
  }
  return static_cast<T>(r);
}

template <typename T>
T Narrow(std::int64_t v) {
  if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max()) {
    Raise(kErrOverflow);
  }
  return static_cast<T>(v);
}

}  // namespace

Integer CInt(double v) {
  return RoundChecked<Integer>(v);
}
Long CLng(double v) {
  return RoundChecked<Long>(v);
}

Integer IntAdd(Integer a, Integer b) {
  return Narrow<Integer>(std::int64_t{a} + b);
}
Integer IntSub(Integer a, Integer b) {
  return Narrow<Integer>(std::int64_t{a} - b);
}
Integer IntMul(Integer a, Integer b) {
  return Narrow<Integer>(std::int64_t{a} * b);
}
Long LongAdd(Long a, Long b) {
  return Narrow<Long>(std::int64_t{a} + b);
}
Long LongSub(Long a, Long b) {
  return Narrow<Long>(std::int64_t{a} - b);
}
Long LongMul(Long a, Long b) {
  return Narrow<Long>(std::int64_t{a} * b);
}

Single CheckSingle(double v) {
  if (!std::isfinite(v)) Raise(kErrOverflow);
  const float f = static_cast<float>(v);
  if (!std::isfinite(f)) Raise(kErrOverflow);
  return f;
}

double CheckDouble(double v) {
  if (!std::isfinite(v)) Raise(kErrOverflow);
  return v;
}

Single DivSingle(Single a, Single b) {
  if (b == 0.0f) Raise(a == 0.0f ? kErrOverflow : kErrDivisionByZero);
  return CheckSingle(static_cast<double>(a / b));
}

double DivDouble(double a, double b) {
  if (b == 0.0) Raise(a == 0.0 ? kErrOverflow : kErrDivisionByZero);
  return CheckDouble(a / b);
}

Single SqrtSingle(Single v) {
  if (v < 0.0f || std::isnan(v)) Raise(kErrInvalidCall);
  return std::sqrt(v);
}

double SqrtDouble(double v) {
  if (v < 0.0 || std::isnan(v)) Raise(kErrInvalidCall);
  return std::sqrt(v);
}

double LogDouble(double v) {
  if (!(v > 0.0)) Raise(kErrInvalidCall);
  return std::log(v);
}

double RoundDown(double v, int n) {
  if (n > 305) n = 305;
  if (n < -305) n = -305;
  const double scale = std::pow(10.0, n);
  return std::floor(v * scale) / scale;
}

}  // namespace quelo
