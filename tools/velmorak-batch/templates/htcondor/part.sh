#!/bin/bash
# Does one part of a planned run: part.sh NUMBER THREADS
job=@job:sh@
runner=@runner:sh@

@setup@

@private@

"$runner" --part "$1" -j "$2" "$job"
