#!/bin/bash
# Does one part of a planned run, as a task of an array. submit.sh submits it.

# A line with ## is not in use; remove one # to use it.
#$ -N velmorak-part
#$ -S /bin/bash
#$ -j y
#$ -o logs
#$ -l h_rt=@time|01:00:00@
#$ -l h_vmem=@memory|2000M@
#$ -q @partition|NAME@
#$ -P @account|NAME@

# Threads: the name of the parallel environment is your site's; qconf -spl lists them.
#$ -pe smp @several_threads|2@

# If the node dies, the part runs again on another one. What a killed part has written does no harm.
#$ -r y

job=@job:sh@
runner=@runner:sh@

# How often a part that fails is tried again.
retries=@retries@

@setup@

@private@

tries=logs/part-$SGE_TASK_ID.tries
"$runner" --part auto -j "${NSLOTS:-1}" "$job"
status=$?

# Another try does not help a part with wrong usage (1), that was stopped (3), or that lacks parts of an earlier
# round (6). In all other cases another node may be luckier: with status 99, Grid Engine runs the task again.
case $status in
    0 | 1 | 3 | 6) ;;
    *)
        echo "$(hostname): status $status" >>"$tries"
        if [ "$(wc -l <"$tries")" -le "$retries" ]; then
            exit 99
        fi
        ;;
esac
rm -f "$tries"
exit "$status"
