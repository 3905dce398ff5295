// All container templates: list, tree, allocator, string and byte array.
#ifndef SRC_CONTAINERS_KEL_CONTAINERS_H_
#define SRC_CONTAINERS_KEL_CONTAINERS_H_

#include "containers/kel_allocator.h"
#include "containers/kel_array.h"
#include "containers/kel_list.h"
#include "containers/kel_mem.h"
#include "containers/kel_string.h"
#include "containers/kel_tree.h"

#endif  // SRC_CONTAINERS_KEL_CONTAINERS_H_
