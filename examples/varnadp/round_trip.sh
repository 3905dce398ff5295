#!/bin/sh
# Builds the varnadp command if needed, then converts the example customers
# from JSON to the stream and back, showing both, and checks that the JSON
# came back byte for byte.
set -e
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${VARNADP_BUILD_DIR:-$root/build}
[ -f "$build/CMakeCache.txt" ] || cmake -S "$root" -B "$build" >/dev/null
cmake --build "$build" -j"$(nproc)" --target varnadp_tool >/dev/null
varnadp="$build/tools/varnadp/varnadp"
stream=$(mktemp)
back=$(mktemp)
trap 'rm -f "$stream" "$back"' EXIT

echo "== varnadp encode: $here/customers.jsonl to the stream (non-printing bytes shown by cat -v)"
"$varnadp" encode --schema "$here/types.sql" --type customer_t "$here/customers.jsonl" -o "$stream"
cat -v "$stream"
echo
echo "== varnadp decode: the stream back to JSON Lines"
"$varnadp" decode --schema "$here/types.sql" --type customer_t "$stream" -o "$back"
cat "$back"
echo
cmp "$here/customers.jsonl" "$back" && echo "== the JSON came back byte for byte"
