#!/usr/bin/env bash
# Installs the build into a fresh prefix, builds a program outside the tree against the
# installed CMake package, and runs it on a sample recording.
set -euo pipefail
build_dir=$1
source_dir=$2
# A sanitizer build's libraries need the consumer built with the same flags (";"-separated).
flags=${3:-}
flags=${flags//;/ }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
test -f "$work/prefix/include/massdatamanagement/zelkodatastreamconverter/framereader.h"
test -f "$work/prefix/include/massdatamanagement/zelkodatastreamconverter/frameformat.h"
# The installed zelko runs its conversions in share/zelko, where this table must be.
test -f "$work/prefix/share/zelko/MaritimListofCountries.csv"
cmake -S "$source_dir/tests/install/consumer" -B "$work/consumer" -G Ninja \
    -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS="$flags" >/dev/null
cmake --build "$work/consumer" >/dev/null
output=$("$work/consumer/consumer" "$source_dir/data/samples/mixed-host.zdr")
echo "$output"
[ "$output" = "frames 6, results empty 1" ]
