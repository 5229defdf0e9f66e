// Decimal readers on 16-bit text.
#include <gtest/gtest.h>

#include <string>

#include "core/veskstring.h"
#include "guarded_text.h"

namespace {

using vesk_test::Guarded16;

TEST(CTextNumber, SixteenBitDigitsAreWholeUnits) {
  // Units whose low byte is a digit or the sign are neither.
  struct Case { Guarded16::Units text; int value; };
  const Case cases[] = {{{'1', 0x130, '2'}, 1}, {{'1', 0xFF10}, 1},
                        {{0x12D, '5'}, 0}, {{0xFF0D, '5'}, 0}};
  for (const Case& c : cases) {
    EXPECT_EQ(ToInt(Guarded16(c.text).get()), c.value) << c.text[1];
  }
}

}  // namespace
