#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo scenario through mfa-host. The build
# tree is build/ unless DEMO_BUILD names another; the outputs go to <build>/demo unless
# DEMO_OUT says otherwise.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
"$top/scripts/setup-deps.sh"
build=${DEMO_BUILD:-build}
mkdir -p "$build"
"$top/scripts/build.sh" "$build"
out=${DEMO_OUT:-$build/demo}
mkdir -p "$out"
"$build/host/mfa-host" run examples/demo.yaml --log "$out/commands.jsonl" --dump "$out/dump.json" \
  --dot "$out/graph.dot" --trace "$out/trace.log"
