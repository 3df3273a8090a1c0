#!/bin/bash
# Does the parts of a planned run with the processes of an MPI job, and merges them:
#
#   bash @script:sh@
#
# Start it inside of a job of your batch system, or on one computer. Start it again after failures: parts that are done
# end at once. Written by velmorak-batch @version@. Edit it as you like.

job=@job:sh@
scripts=@scripts:sh@
runner=@runner:sh@

# How the processes are started. In a job of a batch system, mpirun usually knows their number without -n; srun does
# as well. The number need not be that of the parts.
launch=(mpirun -n @ranks@)

# The parts of each round, first-last. Each round needs all parts of the one before.
rounds=(@rounds_sh@)

# How often the parts of a round that have failed are tried again.
retries=@retries@

@setup@

@private@

# Whether the parts $1 to $2 all have their files.
complete() {
    local part
    for ((part = $1; part <= $2; ++part)); do
        [ -e "$job/parts/$(printf %05d "$part").part" ] || return 1
    done
}

for range in "${rounds[@]}"; do
    for ((try = 0; try <= retries; ++try)); do
        complete "${range%-*}" "${range#*-}" && break
        "${launch[@]}" bash "$scripts/rank.sh" "${range%-*}" "${range#*-}"
    done
    if ! complete "${range%-*}" "${range#*-}"; then
        "$runner" --status "$job"
        exit 6
    fi
done

# --results DIR puts the results elsewhere; --partial accepts that parts are missing.
"$runner" --merge -j @threads@ "$job"
