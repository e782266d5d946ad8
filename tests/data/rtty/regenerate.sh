#!/usr/bin/env bash
# Makes the RTTY golden data of this folder again from the bulletins' text (*.sent.txt):
# minimodem turns each text into RTTY audio, demodulates the audio into its text
# (*.minimodem.txt) and into its 5-bit codes (*.bits), and zelko-samplegen writes the codes
# as a decoded-text recording (*.zdr). The audio is made in a temporary folder and not kept.
#
#   tests/data/rtty/regenerate.sh [ZELKO-SAMPLEGEN]   (default: build/bin/zelko-samplegen)
#
# Needs minimodem (Debian package "minimodem"); the tests only read the files made here.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
samplegen=${1:-$here/../../../build/bin/zelko-samplegen}

if ! command -v minimodem >/dev/null; then
    echo "regenerate.sh: minimodem is not installed (apt-get install minimodem)" >&2
    exit 1
fi
if [ ! -x "$samplegen" ]; then
    echo "regenerate.sh: no zelko-samplegen at $samplegen (build it, or name it)" >&2
    exit 1
fi

audio=$(mktemp -d)
trap 'rm -rf "$audio"' EXIT

# NAME BAUD: RTTY with 170 Hz shift (mark 1585 Hz, space 1415 Hz), 5-bit Baudot, 1.5 stop bits.
make_bulletin() {
    local name=$1 baud=$2
    local modem=(--baudot --stopbits 1.5 --mark 1585 --space 1415)
    minimodem --tx "${modem[@]}" --samplerate 8000 --file "$audio/$name.wav" "$baud" \
        < "$here/$name.sent.txt"
    minimodem --rx "${modem[@]}" --quiet --file "$audio/$name.wav" "$baud" \
        > "$here/$name.minimodem.txt"
    minimodem --rx "${modem[@]}" --quiet --binary-output --file "$audio/$name.wav" "$baud" \
        > "$here/$name.bits"
    "$samplegen" --from-codes "$here/$name.bits" "$baud" "$here/$name.zdr"
}

make_bulletin weather-50 50
make_bulletin navwarn-50 50
make_bulletin qso-45 45.45
