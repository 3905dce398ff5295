#include <host/kel.h>

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

TEST(KelCriticalSection, HeapAllocatedInitEnterLeaveDestroy) {
  auto pSection = std::make_unique<KEL_CRITICAL_SECTION>();
  kelCriticalSectionInitialize(pSection.get());
  kelCriticalSectionEnter(pSection.get());
  kelCriticalSectionLeave(pSection.get());
  kelCriticalSectionEnter(pSection.get());
  kelCriticalSectionLeave(pSection.get());
  kelCriticalSectionDestroy(pSection.get());
}

TEST(KelCriticalSection, ReinitialisedAfterDestroy) {
  KEL_CRITICAL_SECTION section;
  for (int i = 0; i < 3; ++i) {
    kelCriticalSectionInitialize(&section);
    kelCriticalSectionEnter(&section);
    kelCriticalSectionLeave(&section);
    kelCriticalSectionDestroy(&section);
  }
}

TEST(KelCriticalSection, NullSectionIsIgnored) {
  kelCriticalSectionInitialize(nullptr);
  kelCriticalSectionEnter(nullptr);
  kelCriticalSectionLeave(nullptr);
  kelCriticalSectionDestroy(nullptr);
}

TEST(KelCriticalSection, ExcludesOtherThreads) {
  KEL_CRITICAL_SECTION section;
  kelCriticalSectionInitialize(&section);
  long nCounter = 0;
  auto work = [&] {
    for (int i = 0; i < 5000; ++i) {
      kelCriticalSectionEnter(&section);
      // Split read and write so that an unlocked race would lose updates.
      long nSeen = nCounter;
      std::this_thread::yield();
      nCounter = nSeen + 1;
      kelCriticalSectionLeave(&section);
    }
  };
  std::thread a(work);
  std::thread b(work);
  a.join();
  b.join();
  kelCriticalSectionDestroy(&section);
  EXPECT_EQ(10000, nCounter);
}

}  // namespace
