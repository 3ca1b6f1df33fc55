#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test twice: a normal build and
# one under AddressSanitizer and UndefinedBehaviorSanitizer. Exits non-zero on any failure.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
"$top/scripts/setup-deps.sh"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

status=0
echo "=== include directions"
"$top/scripts/check-includes.sh" || status=1
run_suite() {
  local dir=$1; shift
  echo "=== build $dir $*"
  "$top/scripts/build.sh" "$dir" "$@" || return 1
  echo "=== test $dir"
  ctest --test-dir "$dir" --output-on-failure -j "$(nproc)" --timeout 600 || return 1
}
run_suite build || status=1
run_suite build-asan -DVEK_SANITIZE=ON -DVEK_BENCH=OFF || status=1
if [ $status -ne 0 ]; then echo "TESTS FAILED"; else echo "ALL TESTS PASSED"; fi
exit $status
