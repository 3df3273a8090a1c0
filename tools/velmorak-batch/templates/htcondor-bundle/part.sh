#!/bin/bash
# Does one part of a planned run in a folder to which HTCondor has sent what it needs: part.sh NUMBER NAME THREADS
runner=@runner:sh@

@setup@

@private@

# The folder of the job, as far as this part needs it. The data stay beside it.
mkdir -p job
mv plan.json inputs job/
if [ -d parts ]; then
    mv parts job/
fi
mkdir -p job/parts

"$runner" --part "$1" -j "$3" job
status=$?

# HTCondor brings back new files of this folder: the part, or the reason why it failed.
for file in "job/parts/$2.part" "job/parts/$2.failed"; do
    if [ -e "$file" ]; then
        mv "$file" .
    fi
done
exit $status
