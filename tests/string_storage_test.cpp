// VeskString construction, assignment, copying and release.
#include <cstring>
#include <functional>
#include <string>

#include "host/vm_string.h"
#include "huge_text.h"
#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::IsSharedEmpty;
using vesk_test::IsZeroed;
using vesk_test::RequestCounter;

enum class State { kZeroed, kSharedEmpty, kOwn };

State StateOf(const VeskString& s) {
  if (IsZeroed(s)) return State::kZeroed;
  if (IsSharedEmpty(s)) return State::kSharedEmpty;
  return State::kOwn;
}

// Checks the fields and the invariants of the own-buffer state.
void ExpectString(const VeskString& s, State state, const std::string& bytes,
                  int capacity) {
  EXPECT_EQ(StateOf(s), state);
  EXPECT_EQ(Bytes(s), bytes);
  EXPECT_EQ(s.Length(), static_cast<int>(bytes.size()));
  EXPECT_EQ(s.Capacity(), capacity);
  if (s.Text() != nullptr) {
    EXPECT_EQ(s.Text()[s.Length()], '\0');
  }
}

TEST(StorageTest, PositiveLengthReadsNoFurtherThanItSays) {
  const char unterminated[3] = {'a', 'b', 'c'};
  VeskString s;
  s.Set(unterminated, 3);
  ExpectString(s, State::kOwn, "abc", 4);
}

struct CopyCase {
  const char* name;
  std::function<VeskString()> make;
  State state;
  std::string bytes;
  int capacity;
};
void PrintTo(const CopyCase& c, std::ostream* os) { *os << c.name; }

class CopyTest : public testing::TestWithParam<CopyCase> {};

TEST_P(CopyTest, CopiesTheTextUpToItsFirstNul) {
  const CopyCase& c = GetParam();
  const VeskString source = c.make();
  const VeskString constructed(source);
  ExpectString(constructed, c.state, c.bytes, c.capacity);

  VeskString assigned("previous text");
  assigned = source;
  EXPECT_EQ(StateOf(assigned), c.state);
  EXPECT_EQ(Bytes(assigned), c.bytes);
  if (source.Text() != nullptr && source.Text()[0] != '\0') {
    EXPECT_NE(constructed.Text(), source.Text());  // deep copy
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CopyTest,
    testing::Values(
        CopyCase{"Text", [] { return VeskString("abc"); }, State::kOwn, "abc",
                 4},
        CopyCase{"EmbeddedNul",
                 [] { return vesk_test::FromBytes(std::string("ab\0cd", 5)); },
                 State::kOwn, "ab", 3},
        CopyCase{"Zeroed", [] { return VeskString(); }, State::kZeroed, "", 0},
        CopyCase{"SharedEmpty", [] { return VeskString(""); },
                 State::kSharedEmpty, "", 1},
        CopyCase{"EmptyOwnBuffer", [] { return VeskString(10); },
                 State::kSharedEmpty, "", 1}),
    [](const testing::TestParamInfo<CopyCase>& info) {
      return std::string(info.param.name);
    });

std::string g_releasedBytes;
unsigned long g_releasedSize = 0;

TEST(StorageTest, SecureClearZeroesTheWholeBufferBeforeReleasingIt) {
  VeskString s(10);
  s.AppendString("abc");
  std::memset(const_cast<char*>(s.Text()) + 4, 'x', 6);  // bytes past the NUL
  g_releasedSize = 10;
  Pelgc::SetReleaseObserver([](const void* block) {
    g_releasedBytes.assign(static_cast<const char*>(block), g_releasedSize);
  });
  s.SecureClear();
  Pelgc::SetReleaseObserver(nullptr);
  EXPECT_TRUE(IsZeroed(s));
  EXPECT_EQ(g_releasedBytes, std::string(10, '\0'));
}

// Operations that write into an own buffer only: on a zeroed string and
// on the shared empty text (where a write would fault) they change nothing,
// but the clears leave the string zeroed.
TEST(StorageTest, NoTextIsWrittenOrReleasedWithoutAnOwnBuffer) {
  const struct {
    const char* name;
    void (*op)(VeskString*);
    bool clears;
  } kOps[] = {
      {"SecureClear", [](VeskString* s) { s->SecureClear(); }, true},
      {"Clear", [](VeskString* s) { s->Clear(); }, true},
      {"Truncate", [](VeskString* s) { s->Truncate(0); }, false},
      {"RemoveTrailingSpaces", [](VeskString* s) { s->RemoveTrailingSpaces(); }, false},
      {"ToUpper", [](VeskString* s) { s->ToUpper(); }, false},
      {"ToLower", [](VeskString* s) { s->ToLower(); }, false},
  };
  for (const auto& op : kOps) {
    SCOPED_TRACE(op.name);
    RequestCounter counter;
    VeskString zeroed;
    VeskString shared("");
    op.op(&zeroed);
    op.op(&shared);
    EXPECT_TRUE(IsZeroed(zeroed));
    EXPECT_TRUE(op.clears ? IsZeroed(shared) : IsSharedEmpty(shared));
    EXPECT_EQ(counter.Requests(), 0u);
    EXPECT_EQ(counter.Releases(), 0u);
  }
}

TEST(StorageTest, ScriptStrings) {
  marlo::String empty("");
  marlo::String accented("caf\xC3\xA9");
  const unsigned short pair[] = {'x', 0xD83D, 0xDE00};
  marlo::String astral(pair, 3);

  ExpectString(VeskString(static_cast<marlo::String*>(nullptr)),
               State::kSharedEmpty, "", 1);
  ExpectString(VeskString(&empty), State::kSharedEmpty, "", 1);
  ExpectString(VeskString(&accented), State::kOwn, "caf\xC3\xA9", 6);

  RequestCounter counter;
  VeskString s;
  s.Set(&astral);
  ExpectString(s, State::kOwn, "x\xF0\x9F\x98\x80", 6);
  EXPECT_EQ(counter.Requests(), 2u);  // the view's buffer, then the copy
  EXPECT_EQ(counter.Releases(), 1u);  // the view's buffer
}

TEST(StorageTest, SourcesTooLongForAnIntAreReportedBeforeAnyRequest) {
  vesk_test::HugeText huge;
  if (huge.get() == nullptr) GTEST_SKIP() << "cannot map 2 GiB";
  VeskString s("abc");
  VeskString prefix("x");
  VeskString zeroed;
  RequestCounter counter;
  EXPECT_THROW(s.Set(huge.get(), -1), Pelgc::ObjectTooLargeError);
  EXPECT_TRUE(IsZeroed(s));

  EXPECT_THROW(prefix.AppendString(huge.get()), Pelgc::HeapAbortError);
  EXPECT_THROW(prefix.AppendString(huge.get(), 2147483646),
               Pelgc::HeapAbortError);
  EXPECT_EQ(Bytes(prefix), "x");
  // 2^31 - 2 bytes fit the length, but the grown capacity would not.
  EXPECT_THROW(zeroed.AppendString(huge.get(), 2147483646),
               Pelgc::ObjectTooLargeError);
  EXPECT_TRUE(IsZeroed(zeroed));
  EXPECT_EQ(counter.Requests(), 0u);
}

}  // namespace
