// The default host heap: accounting, fault injection and pointer checks.
#include <new>

#include "test_support.h"

namespace {

using Pelgc::HeapFault;
using vesk_test::ScopedHeapFault;

TEST(HeapTest, AccountsRequestsAndReleases) {
  const Pelgc::HeapStats before = Pelgc::GetHeapStats();
  void* a = Pelgc::SystemNew(10, Pelgc::kMayReturnNull);
  void* b = Pelgc::SystemNew(33, Pelgc::kNeverNull);
  Pelgc::HeapStats during = Pelgc::GetHeapStats();
  EXPECT_EQ(during.requests - before.requests, 2u);
  EXPECT_EQ(during.live - before.live, 2u);
  EXPECT_EQ(during.lastSize, 33u);
  EXPECT_EQ(during.lastOpts, Pelgc::kNeverNull);
  Pelgc::SystemDelete(a);
  Pelgc::SystemDelete(b);
  const Pelgc::HeapStats after = Pelgc::GetHeapStats();
  EXPECT_EQ(after.releases - before.releases, 2u);
  EXPECT_EQ(after.live, before.live);
}

struct FaultCase {
  const char* name;
  HeapFault fault;
  Pelgc::FixedMallocOpts opts;
  bool persistent;
  const char* expected;  // per request: 'o' ok, 'n' null, 'x' bad_alloc
};
void PrintTo(const FaultCase& c, std::ostream* os) { *os << c.name; }

class HeapFaultTest : public testing::TestWithParam<FaultCase> {};

TEST_P(HeapFaultTest, FailsTheRequestsThePlanNames) {
  const FaultCase& c = GetParam();
  ScopedHeapFault fault(2, c.fault, c.persistent);
  std::string seen;
  for (int i = 0; i < 5; ++i) {
    try {
      void* block = Pelgc::SystemNew(8, c.opts);
      seen += block != nullptr ? 'o' : 'n';
      if (block != nullptr) Pelgc::SystemDelete(block);
    } catch (const std::bad_alloc&) {
      seen += 'x';
    }
  }
  EXPECT_EQ(seen, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Plans, HeapFaultTest,
    testing::Values(
        FaultCase{"NullOnce", HeapFault::kReturnNull, Pelgc::kMayReturnNull,
                  false, "oonoo"},
        FaultCase{"NullFromThenOn", HeapFault::kReturnNull,
                  Pelgc::kMayReturnNull, true, "oonnn"},
        FaultCase{"ThrowOnce", HeapFault::kThrowBadAlloc,
                  Pelgc::kMayReturnNull, false, "ooxoo"},
        FaultCase{"ThrowFromThenOn", HeapFault::kThrowBadAlloc,
                  Pelgc::kNeverNull, true, "ooxxx"},
        // A request that must never yield null throws instead.
        FaultCase{"NullBecomesThrowForOptionZero", HeapFault::kReturnNull,
                  Pelgc::kNeverNull, false, "ooxoo"}),
    [](const testing::TestParamInfo<FaultCase>& info) {
      return std::string(info.param.name);
    });

TEST(HeapTest, ReportsThrowTheirErrors) {
  EXPECT_THROW(Pelgc::GCHeap::SignalObjectTooLarge(),
               Pelgc::ObjectTooLargeError);
  ASSERT_NE(Pelgc::GCHeap::instance, nullptr);
  EXPECT_THROW(Pelgc::GCHeap::instance->Abort(), Pelgc::HeapAbortError);
}

TEST(HeapDeathTest, ReleasingWhatWasNeverHandedOutAborts) {
  if (!Pelgc::HeapChecksEnabled()) GTEST_SKIP() << "built without checks";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(Pelgc::SystemDelete(const_cast<char*>(vesk_test::SharedEmpty())),
               "never handed out");
  static char notFromTheHeap[4];
  EXPECT_DEATH(Pelgc::SystemDelete(notFromTheHeap), "never handed out");
  EXPECT_DEATH(
      {
        void* block = Pelgc::SystemNew(4, Pelgc::kNeverNull);
        Pelgc::SystemDelete(block);
        Pelgc::SystemDelete(block);
      },
      "already released");
}

}  // namespace
