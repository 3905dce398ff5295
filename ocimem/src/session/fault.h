// Injected faults (ocimemFaultArm): the registry consulted at the start of every call.
#ifndef OCIMEM_SRC_SESSION_FAULT_H
#define OCIMEM_SRC_SESSION_FAULT_H

#include <string>
#include <vector>

#include "session/handles.h"

namespace ocimem {

struct FiredFault {
  sword status;
  std::vector<ErrorRecord> records;
};

// Counts a call of `function`; true with `out` filled when an armed fault fires for it.
bool TakeFault(const char* function, FiredFault* out);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SESSION_FAULT_H
