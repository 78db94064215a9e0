#!/usr/bin/env bash
# Writes the example datasets that a first start opens from the empty plot, into BUILD_DIR/examples,
# unless they are there already. Two conditions of a few thousand cells each, with images, so that
# a newcomer sees cells at once. Each file is written under a temporary name and renamed when
# complete, so that an interrupted run leaves no half-written dataset behind.
#
#     bash scripts/write-examples.sh [BUILD_DIR]
set -euo pipefail

build_dir=${1:-build}
writer="$build_dir/tools/tessaly-example-data"
examples="$build_dir/examples"

if [[ ! -x "$writer" ]]; then
    echo "write-examples: $writer is missing; build the target tessaly-example-data first" >&2
    exit 1
fi
mkdir -p "$examples"

# write FILE ARGS...: runs the writer into a temporary file beside FILE and renames it into place.
write() {
    local target="$examples/$1"
    shift
    [[ -e "$target" ]] && return 0
    local partial="$target.partial"
    rm -f "$partial"
    "$writer" "$@" "$partial" >/dev/null
    mv -f "$partial" "$target"
    echo "write-examples: wrote $target"
}

# One line per example file, written side by side, each to a temporary name renamed when complete.
# The demonstration look-up table comes from a closed-form law, not from a finite-element model; it
# is offered to "Choose Table..." in the Calculations dock, never placed where the program looks.
write control.vqd --events 1500 --sample "Control" --seed 1 &
write treated.vqd --events 1500 --sample "Treated" --deform-scale 1.4 --fluorescent-fraction 0.6 --seed 2 &
write demo-lookup-table.txt --write-demo-table &

# Every writer must have succeeded.
status=0
for job in $(jobs -p); do
    wait "$job" || status=1
done
exit $status
