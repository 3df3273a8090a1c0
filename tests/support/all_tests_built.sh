#!/usr/bin/env bash
# Fails when a *_test.cpp below tests/ is named by no CMakeLists.txt beside it.
set -eu
cd "$1"
missing=0
while IFS= read -r file; do
    if ! grep -qF "$(basename "$file")" "$(dirname "$file")/CMakeLists.txt"; then
        echo "not in the build: $file" >&2
        missing=1
    fi
done < <(find tests -name '*_test.cpp')
exit "$missing"
