#!/usr/bin/env bash
# The demo of ./dev demo: converts the bundled sample recordings and shows what came out.
set -euo pipefail
cd "$(dirname "$0")/.."
zelko=${ZELKO:-build/bin/zelko}
out=${ZELKO_DEMO_DIR:-build/demo}
rm -rf "$out"
mkdir -p "$out"

echo "== The sample recordings"
"$zelko" inspect --summary --trace 0 data/samples/*.zdr
echo
echo "== Converting the teleprinter sample (two RTTY channels, ITA2) and the NAVTEX sample"
"$zelko" convert --trace 0 --quiet --alphabets data/alphabets -o "$out/teleprinter" \
    --settings data/samples/teleprinter-job.xml data/samples/teleprinter-two-channels.zdr
"$zelko" convert --trace 0 --quiet --alphabets data/alphabets -o "$out/navtex" \
    --settings data/samples/navtex-job.xml data/samples/navtex-ccir476.zdr
echo
for document in "$out"/teleprinter/*.xml "$out"/navtex/*.xml; do
    echo "== First lines of $document"
    grep -v -e '<RawContent>' -e '&lt;' "$document" | head -n 24
    echo "   ..."
    echo
done
echo "== The translated text"
for document in "$out"/teleprinter/*.xml "$out"/navtex/*.xml; do
    sed -n '/<Content>/,/<\/Content>/p' "$document" | sed -e 's/<\/\{0,1\}Content>//g' -e 's/&#13;//g'
done
echo
echo "== RTTY traffic keyed and demodulated by minimodem (tests/data/rtty), read without and with"
echo "   unshift on space: the sender leaves out LTRS after a space in figures"
for alphabet in "International" "International USOS"; do
    "$zelko" convert --trace 0 --quiet --alphabets data/alphabets -o "$out/rtty-${alphabet// /-}" \
        --alphabet "$alphabet" tests/data/rtty/weather-50.zdr >/dev/null
    echo "-- $alphabet"
    sed -n '/<Content>/,/<\/Content>/p' "$out/rtty-${alphabet// /-}"/*.xml |
        sed -e 's/<\/\{0,1\}Content>//g' -e 's/&#13;//g' -e 's/^ *//' | head -n 3
done
echo
echo "== Transmission systems: a paging channel (POCSAG) and a three-block ACARS message"
for sample in pocsag-paging acars-multiblock; do
    "$zelko" convert --trace 0 --quiet -o "$out/$sample" "data/samples/$sample.zdr"
    echo "-- $sample"
    grep -h -e '<PDUDataBlock' -e '<Field' -e '<Content>' "$out/$sample"/*.xml |
        sed -e 's/^ *//' -e 's/ method="[^"]*"//' | head -n 24
    echo "   ..."
done
echo
echo "== AIS: ten minutes of an NMEA log imported, then converted into the result document and"
echo "   one station file per ship"
"$zelko" import aivdm --quiet data/samples/ais-elbe.nmea -o "$out/ais-elbe.zdr"
"$zelko" convert --trace 0 --quiet -o "$out/ais" "$out/ais-elbe.zdr" | awk '{print $1, $3, $NF}'
station=$(ls "$out"/ais/AISStation_211234567_*.xml)
echo "-- the first report of $station"
grep -m 1 -A 14 '<PDUDataBlock' "$station" | sed -e 's/^ *//' -e 's/ method="[^"]*"//'
echo
echo "== Frequency hoppers: hop-frequency set and channel grid of radio 7, with a plot"
"$zelko" bursts data/samples/hoppers.zdr --radio 7 --plot "$out/radio7.png" | sed -n '1,40p'
echo
echo "== Audio: the FLAC sample becomes a Broadcast Wave file and a session file"
"$zelko" convert --trace 0 --quiet -o "$out/audio" --start 2024-01-31T23:59:58.001Z \
    data/samples/audio-tone-bursts.flac
echo "-- $out/audio/audio-tone-bursts.session.xml"
cat "$out/audio/audio-tone-bursts.session.xml"
echo
if command -v xmllint >/dev/null; then
    xmllint --noout --schema schemas/audiosession.xsd "$out/audio/audio-tone-bursts.session.xml"
fi
echo
echo "== Images: a weather-fax chart (four lines lost, one received twice) and a Feld-Hell call"
"$zelko" convert --trace 0 --quiet -o "$out/images" data/samples/weatherfax-chart.zdr \
    data/samples/feldhell-call.zdr | awk '{print $1, $3, $NF}'
grep -h -e '<Item name="\(Kind\|Width\|Height\|MissingLines\|RepeatedLines\|Text\)"' \
    "$out"/images/*.xml | sed -e 's/^ *//'
echo "-- the Hellschreiber text"
cat "$out"/images/Hellschreiber_*.txt
echo
echo "== Symbols: 5-bit teleprinter symbols read through ITA2 beside a channel of bare bits, and a"
echo "   Morse exchange keyed at 20 and 30 words a minute ('~' marks a character read unsurely)"
"$zelko" convert --trace 0 --quiet --alphabets data/alphabets --alphabet International \
    -o "$out/symbols" data/samples/symbols-teleprinter.zdr | awk '{print $1, $2, $3, $NF}'
cat "$out"/symbols/Symbols_1_*.txt
"$zelko" convert --trace 0 --quiet --alphabets data/alphabets -o "$out/morse" \
    data/samples/morse-exchange.zdr | awk '{print $1, $2, $3, $NF}'
cat "$out"/morse/Morse_0_*.txt
echo "-- the confidence of the first characters"
grep -m 2 -A 3 '<UserData' "$out"/morse/NerikResultData_*.xml | sed -e 's/^ *//'
echo "-- CW audio made by ebook2cw, keyed into symbol frames by zelko import morse-audio"
"$zelko" import morse-audio --quiet data/samples/cw-cq-20wpm.ogg -o "$out/cw-cq.zdr"
"$zelko" convert --trace 0 --quiet --alphabets data/alphabets -o "$out/cw" "$out/cw-cq.zdr" \
    | awk '{print $1, $2, $3, $NF}'
cat "$out"/cw/Morse_0_*.txt
