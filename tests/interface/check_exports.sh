#!/usr/bin/env bash
# Usage: check_exports.sh LIBRARY ALLOWED_REGEX [REQUIRED_SYMBOL...]
# Fails when the library's dynamic symbol table defines a symbol (demangled)
# that the pattern does not allow, or lacks one of the required symbols.
set -euo pipefail
lib=$1 allowed=$2
shift 2
syms=$(nm -D --defined-only -C "$lib" | awk '{ $1=""; $2=""; sub(/^  /, ""); print }' | sort -u)
bad=$(grep -v -E "$allowed" <<<"$syms" || true)
status=0
if [ -n "$bad" ]; then
  echo "unexpected exports from $lib:"
  echo "$bad"
  status=1
fi
for s in "$@"; do
  if ! grep -q -E "^${s}(\(.*)?$" <<<"$syms"; then
    echo "missing export from $lib: $s"
    status=1
  fi
done
[ $status -eq 0 ] && echo "exports of $(basename "$lib") ok ($(wc -l <<<"$syms") symbols)"
exit $status
