#!/bin/bash
# Puts the parts of a planned run together: merge.sh THREADS
job=@job:sh@
runner=@runner:sh@

@setup@

@private@

# --results DIR puts the results elsewhere; --partial accepts that parts are missing.
"$runner" --merge -j "$1" "$job"
