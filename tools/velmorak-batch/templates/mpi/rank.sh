#!/bin/bash
# Does the share of one MPI process of the parts $1 to $2. run.sh starts it.

job=@job:sh@
runner=@runner:sh@
rank=${OMPI_COMM_WORLD_RANK:-${PMI_RANK:-${SLURM_PROCID:-0}}}
ranks=${OMPI_COMM_WORLD_SIZE:-${PMI_SIZE:-${SLURM_NTASKS:-1}}}

@setup@

@private@

# With as many processes as parts, "$runner" --part auto "$job" would do. Here, process 0 of 4 does the parts 1, 5, 9.
for ((part = $1 + rank; part <= $2; part += ranks)); do
    rm -rf "$XDG_STATE_HOME"
    "$runner" --part "$part" -j @threads@ "$job"
done

# mpirun would end all processes if this one told that a part has failed; run.sh sees it.
exit 0
