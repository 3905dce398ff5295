// Fault injection at every allocation of the process: the test binary that
// links every_allocation.cc replaces the global operator new family (throwing
// and nothrow) and malloc, calloc and realloc, which the adapter, the host
// library, the in-memory OCI and the C++ runtime all reach (under the address
// sanitizer, which owns malloc, only operator new). While armed, the
// calling thread's allocations are counted and the n-th fails once: a
// throwing new throws std::bad_alloc, the others return NULL.
//
// While watching, every block the calling thread gets is remembered until it
// is released, so that a test can ask how many are still live.
#ifndef TESTS_ADAPTER_ALLOC_EVERY_ALLOCATION_H_
#define TESTS_ADAPTER_ALLOC_EVERY_ALLOCATION_H_

namespace every_allocation {

enum Kind { kNew, kNothrowNew, kMalloc, kCalloc, kRealloc, kKinds };
const char* KindName(Kind kind);

// Resets the count and makes the calling thread's n-th allocation from now
// fail; 0 only counts.
void Arm(unsigned long n);
// Stops counting; true when the armed failure was injected.
bool Disarm();
// Allocations counted since the last Arm.
unsigned long Attempts();
// The kind of the allocation that failed last.
Kind FailedKind();
// Whether malloc, calloc and realloc are counted and failed too (not under the
// address sanitizer, which owns them: then only operator new is).
bool CountsMalloc();

// Starts remembering the calling thread's new blocks (forgetting earlier ones).
void Watch();
// Stops; the number of blocks got while watching and not released since.
long Unwatch();
// Whether `p` is one of those (until the next Watch). Allocates nothing.
bool Live(const void* p);

// Arms on construction and disarms on destruction, so that a failed assertion
// cannot leave a failure armed.
class Injection {
 public:
  explicit Injection(unsigned long n) { Arm(n); }
  ~Injection() { Disarm(); }
  Injection(const Injection&) = delete;
  Injection& operator=(const Injection&) = delete;
};

}  // namespace every_allocation

#endif  // TESTS_ADAPTER_ALLOC_EVERY_ALLOCATION_H_
