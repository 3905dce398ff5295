#!/usr/bin/env bash
# Runs every fuzz target (or those named) for a chosen time each, two at a
# time, starting from its seeds and the corpus earlier runs grew.
#   fuzz/run.sh [-t SECONDS] [-j PARALLEL] [-b BUILD_DIR] [target ...]
# Builds the targets first (clang, -DVARNADP_BUILD_FUZZ=ON) in BUILD_DIR
# (default build-fuzz). Each target's log is BUILD_DIR/fuzz/<target>.log; a
# finding is written next to it as <target>-crash-..., -leak-..., -timeout-...
# The last lines of each log (executions, coverage, corpus) are printed at
# the end, and the exit status is 1 when any target found something.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
parallel=2
build=build-fuzz
while getopts "t:j:b:" opt; do
  case "$opt" in
    t) seconds=$OPTARG ;;
    j) parallel=$OPTARG ;;
    b) build=$OPTARG ;;
    *) exit 2 ;;
  esac
done
shift $((OPTIND - 1))
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(read_stream release_scan ocimem_values ocimem_sql)
fi

CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVARNADP_BUILD_FUZZ=ON -DVARNADP_BUILD_TESTS=OFF -DVARNADP_BUILD_COMMAND=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target "${targets[@]/%/_fuzz}"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
run_one() {
  local name=$1
  local out="$build/fuzz"
  mkdir -p "$out/grown/$name"
  "$out/${name}_fuzz" -max_total_time="$seconds" -max_len=4096 -timeout=20 -rss_limit_mb=3072 \
    -print_final_stats=1 -artifact_prefix="$out/$name-" "$out/grown/$name" "fuzz/corpus/$name" \
    >"$out/$name.log" 2>&1
}

status=0
pids=()
names=()
for name in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$parallel" ]; do sleep 1; done
  run_one "$name" &
  pids+=($!)
  names+=("$name")
done
for i in "${!pids[@]}"; do
  if ! wait "${pids[$i]}"; then
    echo "== ${names[$i]}: FOUND SOMETHING (see $build/fuzz/${names[$i]}.log)"
    status=1
  fi
done
for name in "${targets[@]}"; do
  echo "== $name"
  grep -E "^(#[0-9]+ +DONE|stat::number_of_executed_units|stat::peak_rss_mb|stat::new_units_added)" \
    "$build/fuzz/$name.log" || tail -5 "$build/fuzz/$name.log"
done
exit $status
