// Test entry point: every test must leave the host heap as it found it.
#include <gtest/gtest.h>

#include <cstdio>

#include "core/kernels.h"
#include "host/memory_manager.h"

namespace {

class HeapBalanceListener : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override {
    m_liveAtStart = Pelgc::GetHeapStats().live;
  }
  void OnTestEnd(const testing::TestInfo& info) override {
    Pelgc::ClearHeapFault();
    EXPECT_EQ(Pelgc::GetHeapStats().live, m_liveAtStart)
        << info.test_suite_name() << "." << info.name() << ": heap blocks live";
  }
  unsigned long m_liveAtStart = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (!vesk::ForceFormFromEnvironment())
    return 77;  // skipped: that form cannot run
  std::printf("kernels: %s\n", vesk::FormName(vesk::g_form));
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new HeapBalanceListener);
  return RUN_ALL_TESTS();
}
