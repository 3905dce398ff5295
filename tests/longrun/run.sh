#!/bin/sh
# The full long run and a memcheck run of the same program, on a build
# without sanitizers (RelWithDebInfo).
#
# Usage: tests/longrun/run.sh [BUILD_DIR]      (default: build in the source tree)
# Environment: LONGRUN_CALLS (default 1000000), LONGRUN_VALGRIND_CALLS (default 5000).
set -eu
src=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$src/build}
calls=${LONGRUN_CALLS:-1000000}
vg_calls=${LONGRUN_VALGRIND_CALLS:-5000}

cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVARNADP_SANITIZE=OFF >/dev/null
cmake --build "$build" -j2 --target long_run
program=$build/tests/longrun/long_run

echo "== long_run --calls $calls"
"$program" --calls "$calls"

echo "== valgrind memcheck, long_run --calls $vg_calls"
# Memcheck pads every block and holds freed ones back, so resident memory
# under it says nothing about the program's own: the leak check is the
# verdict here, and the memory bound is lifted.
valgrind --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite \
  "$program" --calls "$vg_calls" --bound-kb 4194304
