#!/usr/bin/env bash
# Runs scripts/run with a build, a window, a demonstration and clips that are made up.
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

program scripts/setup 'echo "$@" >>"${0%/*}/../sections"'
program bin/cmake 'echo "cmake $*"; [[ ! -e "${0%/*}/../broken" ]]'
program build/release/bin/boxlift-sample 'echo clip >"$1"'
program build/release/bin/boxlift 'echo window; printf "%s\n" "$@"'
plant tools/desktop/demo.py 'import sys
print("demo")
print("\n".join(sys.argv[1:]))'

# run DISPLAY FILE...: from a folder whose name has a space in it.
run() {
    local display=$1
    shift
    rm -f "$tree/sections"
    status=0
    output=$(cd "$tree/a folder" && PATH="$tree/bin:$PATH" DISPLAY=$display WAYLAND_DISPLAY= \
        "$tree/scripts/run" "$@" 2>&1) || status=$?
    sections=$(cat "$tree/sections" 2>/dev/null || true)
}

# expect WHAT STATUS SECTIONS LINE...: what was set up and said.
expect() {
    local what=$1 wantedStatus=$2 wantedSections=$3
    shift 3
    [[ $status == "$wantedStatus" && $sections == "$wantedSections" &&
        $output == "$(printf '%s\n' "$@")" ]] ||
        report "$what (status $status, sections: $sections)"
}

run :0 a.mov '-v b.mov' "$tree/c.mov"
expect 'a window with files' 0 'build run' window "$tree/a folder/a.mov" \
    "$tree/a folder/-v b.mov" "$tree/c.mov"

without="There is no display: Boxlift runs on a virtual one, and its outputs and pictures go to \
$tree/build/demo."
demo=(demo "$tree/build/release/bin/boxlift" "$tree/build/release/bin/boxlift-drag-source"
    "$tree/build/demo")
setUp='build run
desktop'

run '' a.mov
expect 'files without a display' 0 "$setUp" "$without" "${demo[@]}" "$tree/a folder/a.mov"

plant build/demo/sample.mp4 'an older output'
plant 'build/demo/2 drag.png' 'an older picture'
plant build/demo/holiday.mp4 'the output of a file of their own'
run ''
expect 'clips without a display' 0 "$setUp" "$without" "${demo[@]}" \
    "$tree/build/demo/clips/sample.mov" "$tree/build/demo/clips/tone.wav"
[[ -f $tree/build/demo/clips/sample.mov ]] || report 'the clip should be made'
[[ ! -e $tree/build/demo/sample.mp4 ]] || report 'the older output should be out of the way'
[[ ! -e "$tree/build/demo/2 drag.png" ]] || report 'the older picture should be out of the way'
[[ -e $tree/build/demo/holiday.mp4 ]] || report 'other outputs should stay'

run :0 ''
expect 'an empty file name' 2 '' 'run: a file name is empty.'

plant broken ''
run :0 a.mov
expect 'a build that fails' 1 'build run' 'cmake --preset release' \
    'run: the build of the preset release failed; build/release.log has all of its output.'

exit $((failures > 0))
