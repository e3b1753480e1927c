#!/usr/bin/env bash
# Writes the seeds into a scratch folder and replays each harness's seeds
# through it. Usage: replay-seeds.sh MAKE_SEEDS REPLAY_NAME...
set -euo pipefail
make_seeds=$1
shift
seeds=$(mktemp -d)
trap 'rm -rf "$seeds"' EXIT
"$make_seeds" "$seeds"
for replay in "$@"; do
    name=${replay##*/replay_}
    echo "== $name"
    "$replay" "$seeds/$name"
done
