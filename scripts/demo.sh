#!/usr/bin/env bash
# demo.sh [NAME]: installs what is missing, builds mfa-host and the agent it loads (nothing
# else: no tests, no benchmarks), and runs the demo scenario examples/NAME.yaml (NAME is
# "demo" unless given). The build tree is build/ unless DEMO_BUILD names another; the
# outputs go to <build>/demo (<build>/demo-NAME for another demo) unless DEMO_OUT says
# otherwise. With graphviz installed, the drawing is rendered as graph.svg as well.
# `demo.sh kernel` is the live demo instead: the agent fed from the kernel of a network
# namespace where a routing daemon runs (scripts/demo-kernel.sh; root).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
name=${1:-demo}
scenario="examples/$name.yaml"
if [ "$name" != kernel ] && [ ! -f "$scenario" ]; then
  demos=$(cd examples && ls -- *.yaml | sed 's/\.yaml$//' | tr '\n' ' ')
  echo "demo.sh: there is no demo '$name' (examples/$name.yaml); the demos: kernel $demos" >&2
  exit 2
fi
"$top/scripts/setup-deps.sh" demo
build=${DEMO_BUILD:-build}
mkdir -p "$build"
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo > "$build.configure.log" 2>&1 \
    || { cat "$build.configure.log"; exit 1; }
fi
cmake --build "$build" -j "$(nproc)" --target mfa-host
if [ "$name" = demo ]; then out=${DEMO_OUT:-$build/demo}; else out=${DEMO_OUT:-$build/demo-$name}; fi
mkdir -p "$out"
if [ "$name" = kernel ]; then exec "$top/scripts/demo-kernel.sh" "$build/host/mfa-host" "$out"; fi
"$build/host/mfa-host" run "$scenario" --log "$out/commands.jsonl" --dump "$out/dump.json" \
  --dot "$out/graph.dot" --trace "$out/trace.log"
if command -v dot > /dev/null; then
  dot -Tsvg "$out/graph.dot" > "$out/graph.svg"
  echo "drawing: $out/graph.svg"
fi
