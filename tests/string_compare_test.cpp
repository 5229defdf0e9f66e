// VeskString equality, order, case folding, slicing and character codes.
#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "host/text_services.h"
#include "test_support.h"

namespace {

using Pelgc::HeapFault;
using vesk_test::Bytes;
using vesk_test::IsSharedEmpty;
using vesk_test::IsZeroed;
using vesk_test::ScopedHeapFault;

VeskString FromBytes(const std::string& bytes) {
  VeskString s;
  for (char c : bytes) s.AppendChar(c);
  return s;
}

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

TEST(CaseTest, TablesHoldTheXorOfExactlyTheLetters) {
  for (int c = 0; c < 256; ++c) {
    EXPECT_EQ(g_tolower_map[c], c >= 'A' && c <= 'Z' ? 0x20 : 0) << c;
    EXPECT_EQ(g_toupper_map[c], c >= 'a' && c <= 'z' ? 0x20 : 0) << c;
  }
}

TEST(CaseTest, ZeroedAndSharedStringsAreLeftAlone) {
  VeskString zeroed;
  zeroed.ToUpper();
  zeroed.ToLower();
  EXPECT_TRUE(IsZeroed(zeroed));
  VeskString shared("");  // a write into the shared text would fault
  shared.ToUpper();
  shared.ToLower();
  EXPECT_TRUE(IsSharedEmpty(shared));
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

TEST(SliceTest, EmptyStringsGiveZeroedSlices) {
  const VeskString strings[] = {VeskString(), VeskString(""), VeskString(8)};
  for (const VeskString& s : strings) {
    EXPECT_TRUE(IsZeroed(s.SubString(0, -1)));
    EXPECT_TRUE(IsZeroed(s.SubString(0, 0)));
  }
}

TEST(SliceTest, SlicesEndAtAnEmbeddedNul) {
  const VeskString s = FromBytes(std::string("ab\0cd", 5));
  EXPECT_TRUE(IsSharedEmpty(s.SubString(2, 4)));
  EXPECT_EQ(Bytes(s.SubString(1, 4)), "b");
  EXPECT_EQ(Bytes(s.SubString(3, -1)), "cd");
}

TEST(SliceTest, RequestsAScratchCopyThatMustNotFail) {
  const VeskString s("hello");
  vesk_test::RequestCounter counter;
  {
    ScopedHeapFault fault(0, HeapFault::kReturnNull);  // option 0 throws
    EXPECT_THROW(s.SubString(1, 3), std::bad_alloc);
  }
  const VeskString slice = s.SubString(1, 3);
  EXPECT_EQ(counter.Requests(), 3u);  // failed scratch; scratch and result
  EXPECT_EQ(counter.Releases(), 1u);  // the scratch
  EXPECT_EQ(Bytes(slice), "ell");
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

TEST(CharCodeTest, RoundTripsEveryNonNulByte) {
  for (int byte = 1; byte < 256; ++byte) {
    const VeskString one = FromBytes(std::string(1, static_cast<char>(byte)));
    const VeskString back = VeskString::CharFromCode(one.CharCodeAt(0));
    EXPECT_EQ(Bytes(back), Bytes(one)) << byte;
  }
}

}  // namespace
