#!/usr/bin/env bash
# Runs scripts/run with a build, a converter and a sample clip that are made up.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/planting.sh"

mkdir -p "$tree/a folder"
mkdir "$tree/scripts"
cp "$checks/../../scripts/run" "$checks/../../scripts/common.sh" "$tree/scripts"

program() {
    plant "$1" "#!/usr/bin/env bash
$2"
    chmod +x "$tree/$1"
}

# The converter keeps its arguments and says what the test wants it to say.
program scripts/setup 'echo "$@" >"${0%/*}/../sections"'
program bin/cmake 'echo "cmake $*"; [[ ! -e "${0%/*}/../broken" ]]'
program build/release/bin/boxlift-sample 'echo clip >"$1"'
program build/release/bin/boxlift-drive "printf '%s\n' \"\$@\" >'$tree/arguments'
cat '$tree/events'
exit \"\$(cat '$tree/status')\""

# run FILE...: from a folder whose name has a space in it.
run() {
    rm -f "$tree/arguments"
    status=0
    output=$(cd "$tree/a folder" && PATH="$tree/bin:$PATH" "$tree/scripts/run" "$@" 2>&1) || status=$?
    arguments=$(cat "$tree/arguments" 2>/dev/null || true)
}

# expect WHAT STATUS OUTPUT FILE...: what was said, and which files the converter was given.
expect() {
    local what=$1 wantedStatus=$2 wantedOutput=$3 wanted=
    shift 3
    [[ $# == 0 ]] || wanted=$(printf '%s\n' convert --output-dir "$tree/build/demo" -- "$@")
    [[ $status == "$wantedStatus" && $output == "$wantedOutput" && $arguments == "$wanted" ]] ||
        report "$what (status $status, arguments: $arguments)"
}

plant status 0
plant events '{"event":"ready","url":"/in/a.mov","info":{},"blocker":null,"plan":{"mode":"boxlift"}}
{"event":"progress","url":"/in/a.mov","fraction":0.5}
{"event":"done","url":"/in/a.mov","output":"/out/a.mp4","mode":"boxlift","seconds":0.1}
{"event":"done","url":"/in/b.avi","output":"/out/b 2.mp4","mode":"reencode","seconds":9.1}
{"event":"finished","done":2,"failed":0,"blocked":0}'
run a.mov '-v b.mov' "$tree/c.mov"
expect 'several files' 0 'a.mov was copied without loss to /out/a.mp4
b.avi was re-encoded to /out/b 2.mp4' "$tree/a folder/a.mov" "$tree/a folder/-v b.mov" "$tree/c.mov"
[[ $(cat "$tree/sections") == 'build run' ]] || report 'the sections build and run should be set up'

plant status 1
plant events '{"event":"failed","url":"/in/a.mov","message":"It is \"broken\"."}
{"event":"ready","url":"/in/c.wav","info":{},"blocker":"No video here.","plan":null}
{"event":"cancelled","url":"/in/d.mov"}
{"event":"finished","done":0,"failed":1,"blocked":1}'
run a.mov
expect 'failures' 1 'a.mov failed: It is "broken".
c.wav cannot be converted: No video here.
d.mov was cancelled.' "$tree/a folder/a.mov"

plant status 0
plant events '{"event":"done","url":"/in/q","output":"/out/a\"b\\x41\\\\\udcff\u0009ü.mp4","mode":"boxlift"}'
run q
expect 'names with unusual bytes' 0 \
    "$(printf 'q was copied without loss to /out/a"b\\x41\\\\\xff\tü.mp4')" "$tree/a folder/q"

plant events '{"event":"done","url":"/in/sample.mov","output":"/out/sample.mp4","mode":"boxlift"}'
plant build/demo/sample.mp4 'an older output'
run
expect 'no files: a sample clip' 0 'sample.mov was copied without loss to /out/sample.mp4' \
    "$tree/build/demo/sample.mov"
[[ -f $tree/build/demo/sample.mov ]] || report 'the sample clip should be made'
[[ ! -e $tree/build/demo/sample.mp4 ]] || report 'the older output should be out of the way'

run ''
expect 'an empty file name' 2 'run: a file name is empty.'

plant broken ''
run a.mov
expect 'a build that fails' 1 'cmake --preset release
run: the build of the preset release failed; build/release.log has all of its output.'

exit $((failures > 0))
