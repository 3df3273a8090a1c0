#!/bin/bash
# Submits the parts of a planned run to Slurm, and the merge after them:
#
#   bash @script:sh@
#
# Start it again after failures: it submits only parts that have no file yet, and the merge. Do not start it while the
# jobs of an earlier start are still in the queue; they would do the same work.
# Time, memory and partition are at the beginning of part.sbatch and merge.sbatch.
# Written by velmorak-batch @version@. Edit it as you like.
set -eu

job=@job:sh@
scripts=@scripts:sh@
runner=@runner:sh@

# The parts of each round, first-last. Each round waits for all parts of the one before.
rounds=(@rounds_sh@)

# Slurm refuses task numbers from MaxArraySize on, which is 1001 unless your site has changed it (scontrol show config).
# So tasks have the numbers of the parts up to this one; the parts above it are in further arrays, from task 1 on.
array_size=1000

# How many parts of an array may run at the same time; empty for no limit.
at_once=@at_once@

# Prints which of the parts $2 to $3 have no file yet, less $1, as sbatch --array takes them: 1-4,7
missing() {
    local part list="" begin=""
    for ((part = $2; part <= $3 + 1; ++part)); do
        if ((part <= $3)) && [ ! -e "$job/parts/$(printf %05d "$part").part" ]; then
            begin=${begin:-$part}
        elif [ -n "$begin" ]; then
            list+=${list:+,}$((begin - $1))
            if ((part - 1 > begin)); then
                list+=-$((part - 1 - $1))
            fi
            begin=""
        fi
    done
    echo "$list"
}

# Submits with what is common to all jobs; prints the number of the job. A job whose predecessor failed is cancelled
# rather than left in the queue. "%" has a meaning for Slurm in --output, except as "%%".
submit() {
    local id
    id=$(sbatch --parsable --chdir="$scripts" --kill-on-invalid-dep=yes \
        ${dependency:+--dependency="$dependency"} "$@") || return
    echo "${id%%;*}"
}

mkdir -p "$scripts/logs"
logs=${scripts//%/%%}/logs
dependency=""
for ((round = 1; round <= ${#rounds[@]}; ++round)); do
    first=${rounds[round - 1]%-*}
    last=${rounds[round - 1]#*-}
    ids=""
    for ((begin = first; begin <= last; begin = end + 1)); do
        before=$(((begin - 1) / array_size * array_size))
        end=$((before + array_size < last ? before + array_size : last))
        tasks=$(missing "$before" "$begin" "$end")
        if [ -n "$tasks" ]; then
            plus=""
            if ((before > 0)); then
                plus="$before+"
            fi
            id=$(submit --array="$tasks${at_once:+%$at_once}" --output="$logs/part-$plus%a.txt" \
                "$scripts/part.sbatch" "$before")
            echo "Round $round: job $id, parts $plus${plus:+(}$tasks${plus:+)}"
            ids+=":$id"
        fi
    done
    if [ -n "$ids" ]; then
        dependency=afterok$ids
    fi
done
id=$(submit --output="$logs/merge.txt" "$scripts/merge.sbatch")
echo "Merge: job $id"
echo "What they say is in $scripts/logs; $runner --status $(printf %q "$job") lists the parts that are not done."
