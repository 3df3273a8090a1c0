#!/bin/bash
# Submits the parts of a planned run to Grid Engine, and the merge after them:
#
#   bash @script:sh@
#
# Start it again after failures: parts that are done end at once.
# Time, memory and queue are at the beginning of part.sh and merge.sh.
# Written by velmorak-batch @version@. Edit it as you like.
set -eu

scripts=@scripts:sh@

# The parts of each round, first-last. Each round waits for the end of the one before. If parts of that have failed,
# those of this round fail as well, and so does the merge; each says which parts are missing.
rounds=(@rounds_sh@)

# How many parts may run at the same time; empty for no limit.
at_once=@at_once@

mkdir -p "$scripts/logs"
hold=()
for range in "${rounds[@]}"; do
    id=$(qsub -terse -wd "$scripts" -t "$range" ${at_once:+-tc "$at_once"} ${hold[@]+"${hold[@]}"} "$scripts/part.sh")
    id=${id%%.*}
    echo "Parts $range: job $id"
    hold=(-hold_jid "$id")
done
id=$(qsub -terse -wd "$scripts" "${hold[@]}" "$scripts/merge.sh")
echo "Merge: job $id"
