#!/usr/bin/env bash
# build.sh BUILD_DIR [cmake options...]: configures and builds one tree.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dir=$1; shift
cmake -S "$top" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" > "$dir.configure.log" 2>&1 \
  || { cat "$dir.configure.log"; exit 1; }
cmake --build "$dir" -j "$(nproc)"
