// The numeric types of files and interfaces, and arithmetic that raises
// run-time errors instead of wrapping or producing infinities.
//
// Long = 32-bit, Integer = 16-bit, Single = binary32. Conversions to Integer and
// Long round half to even and raise error 6 (Overflow) when out of range.
// Floating-point helpers raise 11 (division by zero), 6 (overflow, 0/0) or
// 5 (invalid argument of a square root or logarithm).
#pragma once

#include <cstdint>

namespace quelo {

using Long = std::int32_t;
using Integer = std::int16_t;
using Single = float;

// Streams store Booleans as Long -1 / 0.
constexpr Long kTrueLong = -1;

// Round half to even, then range-check.
Integer CInt(double v);
Long CLng(double v);

// Overflow-checked Integer and Long arithmetic.
Integer IntAdd(Integer a, Integer b);
Integer IntSub(Integer a, Integer b);
Integer IntMul(Integer a, Integer b);
Long LongAdd(Long a, Long b);
Long LongSub(Long a, Long b);
Long LongMul(Long a, Long b);

// Checked floating point: the result of one arithmetic step, or a run-time error.
Single CheckSingle(double v);  // non-finite or beyond float range -> 6
double CheckDouble(double v);  // non-finite -> 6
Single DivSingle(Single a, Single b);
double DivDouble(double a, double b);
Single SqrtSingle(Single v);  // negative -> 5
double SqrtDouble(double v);
double LogDouble(double v);  // zero or negative -> 5

// floor(v * 10^n) / 10^n, rounding towards minus infinity at n decimals;
// n is limited to -305..305.
double RoundDown(double v, int n);

// Sign as -1, 0 or +1.
inline int Sgn(double v) {
  return v > 0 ? 1 : (v < 0 ? -1 : 0);
}

}  // namespace quelo
