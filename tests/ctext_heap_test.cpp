// Heap texts: exact sizes, the size guard, and null or throwing heaps.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "core/veskstring.h"
#include "guarded_text.h"
#include "host/memory_manager.h"
#include "host/vm_string.h"
#include "test_support.h"

namespace {

using Pelgc::HeapFault;
using vesk_test::Guarded8;
using vesk_test::RequestCounter;
using vesk_test::ScopedHeapFault;

// Checks that `make` hands out one block, whose last request was for
// `size` bytes, holding `bytes` and a NUL; then releases it.
void ExpectHeapText(const std::function<char*()>& make,
                    const std::string& bytes, unsigned long size) {
  const unsigned long live = Pelgc::GetHeapStats().live;
  char* text = make();
  EXPECT_EQ(Pelgc::GetHeapStats().live, live + 1) << bytes;
  EXPECT_EQ(Pelgc::GetHeapStats().lastSize, size) << bytes;
  EXPECT_EQ(Pelgc::GetHeapStats().lastOpts, Pelgc::kMayReturnNull);
  ASSERT_NE(text, nullptr) << bytes;
  EXPECT_EQ(std::string(text, bytes.size() + 1), bytes + '\0');
  Pelgc::SystemDelete(text);
}

TEST(CTextHeap, ScriptStringsCopyTheirUtf8View) {
  const std::string utf8 = "h\xC3\xA9llo \xF0\x9F\x98\x80";
  marlo::String empty(""), text(utf8.c_str());
  // The view's own block is released: one block stays live.
  const std::pair<marlo::String*, std::string> cases[] = {
      {nullptr, ""}, {&empty, ""}, {&text, utf8}};
  for (const auto& [string, bytes] : cases) {
    marlo::String* s = string;
    ExpectHeapText([s] { return CreateStr(s); }, bytes, bytes.size() + 1);
  }
}

TEST(CTextHeap, SizeGuardAndNullArguments) {
  const char* none = nullptr;
  auto unreadable = Guarded8::Counted("x", 0);
  RequestCounter counter;
  EXPECT_EQ(CreateStr(none), nullptr);
  EXPECT_EQ(CreateStr(none, 5), nullptr);
  EXPECT_EQ(ConcatStr(none, unreadable.get()), nullptr);
  EXPECT_EQ(ConcatStr(unreadable.get(), none), nullptr);
  EXPECT_EQ(CreateStr(ULONG_MAX), nullptr);  // n + 1 wraps to 0
  EXPECT_EQ(CreateStr(unreadable.get(), ULONG_MAX), nullptr);
  EXPECT_THROW(static_cast<void>(CreateStr(4294967294UL)),
               Pelgc::ObjectTooLargeError);
  EXPECT_THROW(static_cast<void>(CreateStr(unreadable.get(), 4294967294UL)),
               Pelgc::ObjectTooLargeError);
  EXPECT_EQ(counter.Requests(), 0u);
  // The largest count that is passed on; the heap's null comes back.
  ScopedHeapFault fault(0, HeapFault::kReturnNull);
  EXPECT_EQ(CreateStr(4294967293UL), nullptr);
  EXPECT_EQ(Pelgc::GetHeapStats().lastSize, 4294967294UL);
}

}  // namespace
