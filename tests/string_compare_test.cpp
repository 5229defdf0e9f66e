// VeskString equality, order, case folding, slicing and character codes.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "host/text_services.h"
#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::FromBytes;
using vesk_test::IsSharedEmpty;
using vesk_test::IsZeroed;

// The strings the comparison tables refer to by name.
struct Samples {
  VeskString zeroed;
  VeskString shared{""};
  VeskString emptyOwn{10};
  VeskString a{"a"};
  VeskString upperZ{"Z"};
  VeskString ab{"ab"};
  VeskString abc{"abc"};
  VeskString abNulC = FromBytes(std::string("ab\0c", 4));
  VeskString eAcute{"\xE9t\xE9"};
  VeskString z{"z"};
};

TEST(CompareTest, EqualityAndOrderAgreeWithTheTable) {
  Samples s;
  struct Row {
    const VeskString* left;
    const VeskString* right;
    bool equal;
    bool less;
  };
  const Row rows[] = {
      {&s.zeroed, &s.zeroed, true, false},
      {&s.abc, &s.abc, true, false},
      {&s.zeroed, &s.shared, false, false},
      {&s.shared, &s.zeroed, false, false},
      {&s.zeroed, &s.emptyOwn, false, false},
      {&s.shared, &s.emptyOwn, true, false},
      {&s.zeroed, &s.a, false, true},
      {&s.a, &s.zeroed, false, false},
      {&s.upperZ, &s.a, false, true},
      {&s.ab, &s.abc, false, true},
      {&s.abc, &s.ab, false, false},
      {&s.abNulC, &s.ab, true, false},
      {&s.z, &s.eAcute, false, true},  // bytes compare unsigned
      {&s.eAcute, &s.z, false, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << "'" << Bytes(*row.left) << "' vs '" << Bytes(*row.right)
                 << "'");
    EXPECT_EQ(*row.left == *row.right, row.equal);
    EXPECT_EQ(*row.right == *row.left, row.equal);
    EXPECT_EQ(*row.left < *row.right, row.less);
  }
}

TEST(CompareTest, EqualityWithCText) {
  Samples s;
  EXPECT_TRUE(s.zeroed == static_cast<const char*>(nullptr));
  EXPECT_FALSE(s.zeroed == "");
  EXPECT_FALSE(s.shared == static_cast<const char*>(nullptr));
  EXPECT_TRUE(s.shared == "");
  EXPECT_TRUE(s.abc == s.abc.Text());
  EXPECT_TRUE(s.abc == "abc");
  EXPECT_FALSE(s.abc == "abd");
  EXPECT_FALSE(s.abc == "abcd");
  EXPECT_FALSE(s.ab == "abc");
  EXPECT_TRUE(s.abNulC == "ab");
}

TEST(CaseTest, FoldsOnlyAsciiLettersUpToTheFirstNul) {
  struct Row {
    std::string text;
    std::string upper;
    std::string lower;
  };
  const Row rows[] = {
      {"abc-xyz", "ABC-XYZ", "abc-xyz"},
      {"Hello, World", "HELLO, WORLD", "hello, world"},
      {"09@[`{\x80\xE9\xFF", "09@[`{\x80\xE9\xFF", "09@[`{\x80\xE9\xFF"},
      {std::string("ab\0cd", 5), std::string("AB\0cd", 5),
       std::string("ab\0cd", 5)},
  };
  for (const Row& row : rows) {
    VeskString upper = FromBytes(row.text);
    upper.ToUpper();
    EXPECT_EQ(Bytes(upper), row.upper);
    VeskString lower = FromBytes(row.upper);
    lower.ToLower();
    EXPECT_EQ(Bytes(lower), row.lower);
  }
}

struct SliceCase {
  int start;
  int end;
  const char* expected;  // null: a zeroed result
};

TEST(SliceTest, SlicesOfHello) {
  const VeskString hello("hello");
  const SliceCase cases[] = {
      {0, 0, "h"},       {1, 3, "ell"},    {0, 4, "hello"},  {0, -1, "hello"},
      {4, -1, "o"},      {0, 5, nullptr},  {3, 2, nullptr},  {-1, 2, nullptr},
      {5, -1, nullptr},  {1, -2, nullptr},
  };
  for (const SliceCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.start << ", " << c.end);
    const VeskString slice = hello.SubString(c.start, c.end);
    if (c.expected == nullptr) {
      EXPECT_TRUE(IsZeroed(slice));
    } else {
      EXPECT_EQ(Bytes(slice), c.expected);
      EXPECT_EQ(slice.Capacity(), slice.Length() + 1);
    }
  }
}

TEST(SliceTest, SlicesEndAtAnEmbeddedNul) {
  const VeskString s = FromBytes(std::string("ab\0cd", 5));
  EXPECT_TRUE(IsSharedEmpty(s.SubString(2, 4)));
  EXPECT_EQ(Bytes(s.SubString(1, 4)), "b");
  EXPECT_EQ(Bytes(s.SubString(3, -1)), "cd");
}

TEST(CharCodeTest, CodesAreSignedBytes) {
  const VeskString s("A\xE9\xFF");
  EXPECT_EQ(s.CharCodeAt(0), 65.0);
  EXPECT_EQ(s.CharCodeAt(1), -23.0);
  EXPECT_EQ(s.CharCodeAt(2), -1.0);
  for (int index : {-1, 3, 1000}) EXPECT_TRUE(std::isnan(s.CharCodeAt(index)));
  EXPECT_TRUE(std::isnan(VeskString().CharCodeAt(0)));
}

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
