#!/usr/bin/env bash
# check-includes.sh: fails on an include that goes against the direction of the folders.
# runtime/ stands on nothing of ours but the messages, and inside it each folder only on the
# folders before it in runtime_order; dataplane/ only on runtime/; the host sees the plug-in
# only through its entry points, which stand in plugin/ on the runtime alone; vxlan/ and mpls/
# are made by the agent and never reach back into it; kernel/ reads a namespace's kernel for
# the host and stands on nothing of ours.
set -uo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
plugin_dirs=$(sed -n 's/^set(VEK_PLUGIN_DIRS \(.*\))$/\1/p' CMakeLists.txt)
entry_points="plugin/MfaAgentEntryPoints.h"
runtime_order="lumo trace dov qel toggle cordex sharedmem state lanx vek"
status=0

# includes FOLDER ALLOWED_REGEX: every project include of FOLDER must match ALLOWED_REGEX.
includes() {
  local folder=$1 allowed=$2
  [ -d "$folder" ] || return 0
  local bad
  bad=$(grep -rnE '^#include "[^"]+"' --include='*.h' --include='*.cc' "$folder" \
        | grep -vE "#include \"($allowed)")
  if [ -n "$bad" ]; then
    echo "$folder: includes against the layering:"
    echo "$bad"
    status=1
  fi
}

includes runtime 'runtime/|proto/'
below=""
for sub in $runtime_order; do
  below="$below|runtime/$sub/"
  includes "runtime/$sub" "proto/${below}"
done
includes plugin 'runtime/'
includes dataplane 'dataplane/|runtime/|proto/'
includes kernel 'kernel/'
plugin_regex=$(echo "$plugin_dirs" | tr ' ' '|')
bad=$(grep -rnE "^#include \"($plugin_regex)/" --include='*.h' --include='*.cc' host \
      | grep -v "#include \"$entry_points\"")
if [ -n "$bad" ]; then
  echo "host: includes a plug-in folder other than by its entry points:"
  echo "$bad"
  status=1
fi
for folder in vxlan mpls; do
  [ -d "$folder" ] || continue
  bad=$(grep -rnE '^#include "agent/' --include='*.h' --include='*.cc' "$folder")
  if [ -n "$bad" ]; then
    echo "$folder: includes the agent:"
    echo "$bad"
    status=1
  fi
done
[ $status -eq 0 ] && echo "includes follow the layering"
exit $status
