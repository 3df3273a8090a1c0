#!/bin/bash
# Puts the parts of a planned run together. submit.sh submits it.

# A line with ## is not in use; remove one # to use it.
#$ -N velmorak-merge
#$ -S /bin/bash
#$ -j y
#$ -o logs
#$ -l h_rt=@time|01:00:00@
#$ -l h_vmem=@memory|2000M@
#$ -q @partition|NAME@
#$ -P @account|NAME@
#$ -pe smp @several_threads|2@
#$ -r y

job=@job:sh@
runner=@runner:sh@

@setup@

@private@

# --results DIR puts the results elsewhere; --partial accepts that parts are missing.
"$runner" --merge -j "${NSLOTS:-1}" "$job"
