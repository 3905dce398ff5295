#include "session/fault.h"

#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>

#include "session/internal.h"
#include "ocimem.h"

namespace ocimem {
namespace {

struct ArmedFault {
  unsigned nth;
  unsigned calls = 0;
  FiredFault fault;
};

std::mutex& FaultMutex() {
  static std::mutex m;
  return m;
}

std::map<std::string, ArmedFault, std::less<>>& Faults() {
  static std::map<std::string, ArmedFault, std::less<>> faults;
  return faults;
}

std::string FormatRecord(sb4 code, const char* message) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "ORA-%05d: ", static_cast<int>(code));
  return std::string(prefix) + (message != nullptr ? message : "");
}

}  // namespace

// Lets every call skip the lock while nothing is armed (read inline by Enter).
std::atomic<int> g_armed_faults{0};

bool TakeFault(const char* function, FiredFault* out) {
  if (g_armed_faults.load(std::memory_order_acquire) == 0) return false;
  std::lock_guard<std::mutex> lock(FaultMutex());
  auto& faults = Faults();
  auto it = faults.find(std::string_view(function));
  if (it == faults.end()) return false;
  ArmedFault& armed = it->second;
  ++armed.calls;
  if (armed.nth != 0 && armed.calls != armed.nth) return false;
  *out = armed.fault;
  if (armed.nth != 0) {
    faults.erase(it);
    g_armed_faults.fetch_sub(1, std::memory_order_release);
  }
  return true;
}

}  // namespace ocimem

extern "C" void ocimemFaultArm(const char* function, unsigned nth, sword status,
                               const sb4* codes, const char* const* messages,
                               unsigned count) try {
  if (function == nullptr) return;
  ocimem::ArmedFault armed;
  armed.nth = nth;
  armed.fault.status = status;
  for (unsigned i = 0; i < count && codes != nullptr; ++i) {
    const char* message = messages != nullptr ? messages[i] : "";
    armed.fault.records.push_back({codes[i], ocimem::FormatRecord(codes[i], message)});
  }
  std::lock_guard<std::mutex> lock(ocimem::FaultMutex());
  auto& faults = ocimem::Faults();
  auto [it, inserted] = faults.insert_or_assign(function, std::move(armed));
  (void)it;
  if (inserted) ocimem::g_armed_faults.fetch_add(1, std::memory_order_release);
} catch (...) {
  // The fault could not be recorded: none is armed.
}

extern "C" void ocimemFaultReset(void) try {
  std::lock_guard<std::mutex> lock(ocimem::FaultMutex());
  ocimem::Faults().clear();
  ocimem::g_armed_faults.store(0, std::memory_order_release);
} catch (...) {
}
