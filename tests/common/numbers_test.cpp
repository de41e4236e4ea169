#include "common/numbers.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <cmath>

#include "common/colour.h"
#include "common/runtime_error.h"

namespace quelo {
namespace {

using quelo::testing::ErrorOf;

TEST(Numbers, ConversionsRoundHalfToEven) {
  EXPECT_EQ(CInt(0.5), 0);
  EXPECT_EQ(CInt(1.5), 2);
  EXPECT_EQ(CInt(2.5), 2);
  EXPECT_EQ(CInt(-2.5), -2);
  EXPECT_EQ(CInt(-3.5), -4);
  EXPECT_EQ(CInt(2.4999), 2);
  EXPECT_EQ(CLng(1e9 + 0.5), 1000000000);
}

TEST(Numbers, ConversionsOutOfRangeRaiseOverflow) {
  EXPECT_EQ(CInt(32767.4), 32767);
  EXPECT_EQ(ErrorOf([] { CInt(32767.5); }), kErrOverflow);
  EXPECT_EQ(CInt(-32768.5), -32768);  // halves to even: -32768
  EXPECT_EQ(ErrorOf([] { CInt(-32769); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { CLng(3e9); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { CLng(NAN); }), kErrOverflow);
}

TEST(Numbers, IntegerArithmeticIsOverflowChecked) {
  EXPECT_EQ(IntAdd(32000, 767), 32767);
  EXPECT_EQ(ErrorOf([] { IntAdd(32000, 768); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { IntSub(-32768, 1); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { IntMul(256, 128); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { LongAdd(2147483647, 1); }), kErrOverflow);
  EXPECT_EQ(LongSub(-2147483647, 1), -2147483647 - 1);
}

TEST(Numbers, FloatingFaultsAreRuntimeErrors) {
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

TEST(Colour, SplitTakesLowMiddleHighByte) {
  const auto c = SplitColour(0x00FF8000);
  EXPECT_FLOAT_EQ(c.red, 0.0f);
  EXPECT_FLOAT_EQ(c.green, 128.0f / 255.0f);
  EXPECT_FLOAT_EQ(c.blue, 1.0f);
  const auto w = SplitColour(0x00FFFFFF);
  EXPECT_EQ(w.red, 1.0f);
  EXPECT_EQ(w.green, 1.0f);
  EXPECT_EQ(w.blue, 1.0f);
}

TEST(Colour, NegativeColoursKeepTheDividendsSign) {
  // -1 mod 256 = -1, -1 div 256 = 0.
  const auto c = SplitColour(-1);
  EXPECT_FLOAT_EQ(c.red, -1.0f / 255.0f);
  EXPECT_EQ(c.green, 0.0f);
  EXPECT_EQ(c.blue, 0.0f);
}

}  // namespace
}  // namespace quelo
