// Character codes of a VeskString.
#include <limits>
#include <string>
#include <vector>

#include "host/text_services.h"
#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::IsSharedEmpty;

TEST(CharCodeTest, FromCodeKeepsTheLowByteOfTheTruncatedInt) {
  const double inf = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<double, const char*>> cases = {
      {65, "A"},           {65.9, "A"},          {321, "A"},
      {-191, "A"},         {233, "\xE9"},        {-23, "\xE9"},
      {2147483647, "\xFF"}, {-2147483648.5, ""}, {0, ""},
      {-0.9, ""},          {256, ""},            {VeskNaN(), ""},
      {2147483648.0, ""},  {1e10, ""},           {inf, ""},
      {-inf, ""},
  };
  for (const auto& [code, expected] : cases) {
    const VeskString s = VeskString::CharFromCode(code);
    EXPECT_EQ(Bytes(s), expected) << code;
    if (expected[0] == '\0') {
      EXPECT_TRUE(IsSharedEmpty(s)) << code;
    }
  }
}

}  // namespace
