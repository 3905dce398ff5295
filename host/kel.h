// Host services used by the adapter: exceptions, trace, stream, byte search
// and locks. A host links libqorvpi and includes this header.
#ifndef HOST_KEL_H_
#define HOST_KEL_H_

#include <host/kel_api.h>
#include <host/kel_exception.h>
#include <host/kel_lock.h>
#include <host/kel_memory.h>
#include <host/kel_stream.h>
#include <host/kel_trace.h>

#endif  // HOST_KEL_H_
