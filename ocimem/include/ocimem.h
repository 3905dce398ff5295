/* Extensions of the in-memory OCI that a real Oracle client does not have.  Test programs
 * include this header; code meant to run on either client never does. */
#ifndef OCIMEM_H
#define OCIMEM_H

#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Makes the nth call (1-based; 0 = every call) of the OCI function named `function`
 * (for example "OCIStmtExecute") return `status` instead of doing its work.  When the
 * call takes an error handle, `count` records are stored in it first: record i has the
 * Oracle error number codes[i] and the message messages[i], given without the
 * "ORA-NNNNN: " prefix.  Calls are counted from the moment of arming; arming the same
 * function again replaces the earlier fault.  A fault armed for one call disarms itself
 * once it has fired. */
void ocimemFaultArm(const char *function, unsigned nth, sword status, const sb4 *codes,
                    const char *const *messages, unsigned count);

/* Disarms every fault and forgets every call count. */
void ocimemFaultReset(void);

/* Calls visit(block, arg) for every freed block the library keeps for reuse rather than
 * giving back (of handles, descriptors, collections and other objects, got from operator
 * new; of values, got from malloc: the calling thread's own and the shared ones), with the
 * address the allocator returned.  A test that counts the blocks a call leaves behind
 * tells these apart.  visit must not allocate or call the library. */
void ocimemForEachKeptBlock(void (*visit)(void *block, void *arg), void *arg);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* OCIMEM_H */
