#include "common/numbers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "common/colour.h"
#include "common/runtime_error.h"
#include "support/error_of.h"

namespace quelo {
namespace {

using quelo::testing::ErrorOf;

TEST(Numbers, ConversionsRoundHalfToEvenAndRaiseOverflowOutOfRange) {
  EXPECT_EQ(CInt(0.5), 0);
  EXPECT_EQ(CInt(1.5), 2);
  EXPECT_EQ(CInt(2.5), 2);
  EXPECT_EQ(CInt(-2.5), -2);
  EXPECT_EQ(CInt(-3.5), -4);
  EXPECT_EQ(CInt(2.4999), 2);
  EXPECT_EQ(CLng(1e9 + 0.5), 1000000000);
  EXPECT_EQ(CInt(32767.4), 32767);
  EXPECT_EQ(ErrorOf([] { CInt(32767.5); }), kErrOverflow);
  EXPECT_EQ(CInt(-32768.5), -32768);  // halves to even: -32768
  EXPECT_EQ(ErrorOf([] { CInt(-32769); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { CLng(3e9); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { CLng(NAN); }), kErrOverflow);
}

TEST(Numbers, ArithmeticRaisesItsRuntimeErrors) {
  EXPECT_EQ(IntAdd(32000, 767), 32767);
  EXPECT_EQ(ErrorOf([] { IntAdd(32000, 768); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { IntSub(-32768, 1); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { IntMul(256, 128); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { LongAdd(2147483647, 1); }), kErrOverflow);
  EXPECT_EQ(LongSub(-2147483647, 1), -2147483647 - 1);
  EXPECT_EQ(ErrorOf([] { DivSingle(1.0f, 0.0f); }), kErrDivisionByZero);
  EXPECT_EQ(ErrorOf([] { DivSingle(0.0f, 0.0f); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { DivSingle(3e38f, 1e-3f); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { CheckSingle(1e39); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { SqrtSingle(-1.0f); }), kErrInvalidCall);
  EXPECT_EQ(ErrorOf([] { LogDouble(0.0); }), kErrInvalidCall);
  EXPECT_FLOAT_EQ(DivSingle(1.0f, 4.0f), 0.25f);
}

TEST(Numbers, RoundDownGoesTowardsMinusInfinity) {
  EXPECT_DOUBLE_EQ(RoundDown(1.23456789123, 4), 1.2345);
  EXPECT_DOUBLE_EQ(RoundDown(-1.23451, 4), -1.2346);
  EXPECT_DOUBLE_EQ(RoundDown(0.00004, 4), 0.0);
  EXPECT_DOUBLE_EQ(RoundDown(1234.5, -2), 1200.0);
  // n beyond the limit is held at 305 instead of overflowing the scale.
  EXPECT_DOUBLE_EQ(RoundDown(1.0, 400), RoundDown(1.0, 305));
}

// Low, middle and high byte, each divided by 255 in double precision and
// stored as a Single; a negative colour keeps the dividend's sign (-1 mod 256
// is -1, -1 div 256 is 0).
TEST(Colour, SplitTakesLowMiddleHighByte) {
  auto rgb = [](Long c) {
    const auto s = SplitColour(c);
    return std::array<Single, 3>{s.red, s.green, s.blue};
  };
  EXPECT_EQ(rgb(0x00FF8000), (std::array<Single, 3>{0, static_cast<Single>(128 / 255.0), 1}));
  EXPECT_EQ(rgb(0x00FFFFFF), (std::array<Single, 3>{1, 1, 1}));
  EXPECT_EQ(rgb(-1), (std::array<Single, 3>{static_cast<Single>(-1 / 255.0), 0, 0}));
}

}  // namespace
}  // namespace quelo
