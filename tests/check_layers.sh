#!/bin/bash
# Fails when a file includes one that its folder must not know: each folder may include itself and
# those that are named behind it here. Run in the root of the sources.
set -euo pipefail

failures=0
# may FOLDER OTHER...: FOLDER includes only itself and the others
may() {
  local folder=$1 allowed
  allowed=$(IFS='|' && echo "$*")
  # The port stands where the system does: for the room that asks the system for the most.
  [[ $folder != host/module ]] || allowed+='|port'
  if grep -rnE '^#include "' "$folder" --include='*.h' --include='*.cpp' |
    grep -vE "#include \"($allowed)/[a-z0-9_]+\.(h|inc)\""; then
    failures=$((failures + 1))
  fi
}

may interface
may port
may errors
may tracking errors
may tree errors interface
may dimse errors tracking tree
may upper_layer errors tracking tree dimse
may plugin errors tracking tree dimse upper_layer interface

# The rooms of the host: each knows only those before it, the programs not each other.
known=(interface)
for room in text capture streams dataset dialogue objects timing findings rows page module; do
  may "host/$room" "${known[@]}"
  known+=("host/$room")
done
may host/capdump "${known[@]}"
may host/capview "${known[@]}"

((failures == 0)) || {
  echo "check_layers.sh: these includes go against the order of the folders" >&2
  exit 1
}
