// The default host's number-to-text conversion.
#include <cmath>
#include <limits>

#include "host/text_services.h"
#include "test_support.h"

namespace {

TEST(ConvertDoubleToStringTest, ShortestDigitsInPlainOrExponentForm) {
  const double kInf = std::numeric_limits<double>::infinity();
  const struct { double value; const char* expected; } kCases[] = {
      {0.1, "0.1"}, {1.0 / 3, "0.3333333333333333"}, {100, "100"},
      {-1.5, "-1.5"}, {123456789012345680000.0, "123456789012345680000"},
      {1e21, "1e+21"}, {-2e22, "-2e+22"}, {0.000001, "0.000001"},
      {1.5e-7, "1.5e-7"}, {1e-7, "1e-7"}, {5e-324, "5e-324"},
      {1.7976931348623157e308, "1.7976931348623157e+308"},
      {9007199254740992.0, "9007199254740992"}, {0.0, "0"}, {-0.0, "0"},
      {kInf, "Infinity"}, {-kInf, "-Infinity"}, {std::nan(""), "NaN"},
  };
  for (const auto& c : kCases) {
    char* text = ConvertDoubleToString(c.value);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, c.expected);
    Pelgc::SystemDelete(text);
  }
  vesk_test::ScopedHeapFault fault(0, Pelgc::HeapFault::kReturnNull);
  EXPECT_EQ(ConvertDoubleToString(1.5), nullptr);
}

}  // namespace
