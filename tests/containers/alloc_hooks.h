// Allocation accounting and fault injection for the container tests.
//
// The test binary replaces the global operator new/delete family and the
// containers' C-heap hooks. Every nothrow new/new[] and every C-heap
// allocation through the hooks (the containers' only ways to get memory) is
// "tracked": it is counted while live, and the n-th tracked allocation after
// ArmFailure(n) returns NULL instead of memory.
#ifndef TESTS_CONTAINERS_ALLOC_HOOKS_H_
#define TESTS_CONTAINERS_ALLOC_HOOKS_H_

namespace kel_test {

// Tracked blocks currently allocated and not yet released.
long LiveTrackedBlocks();

// Tracked allocation attempts since the last ArmFailure (or program start).
unsigned long TrackedAttempts();

// Resets the attempt count and makes the n-th tracked attempt from now fail
// (once); 0 arms nothing, it only resets the count.
void ArmFailure(unsigned long n);

// Disarms; true when the armed failure was injected.
bool DisarmFailure();

// Arms on construction, disarms on destruction, so a failing assertion
// cannot leave a failure armed for the next test.
class FailureScope {
 public:
  explicit FailureScope(unsigned long n) { ArmFailure(n); }
  ~FailureScope() { DisarmFailure(); }
  FailureScope(const FailureScope&) = delete;
  FailureScope& operator=(const FailureScope&) = delete;
};

}  // namespace kel_test

#endif  // TESTS_CONTAINERS_ALLOC_HOOKS_H_
