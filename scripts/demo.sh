#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo scenario through mfa-host.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
"$top/scripts/setup-deps.sh"
"$top/scripts/build.sh" build
out=${DEMO_OUT:-$top/build/demo}
mkdir -p "$out"
if [ -x build/host/mfa-host ]; then
  build/host/mfa-host run examples/demo.yaml --log "$out/commands.jsonl" --dump "$out/dump.json" \
    --dot "$out/graph.dot" --trace "$out/trace.log"
else
  build/runtime_demo
fi
