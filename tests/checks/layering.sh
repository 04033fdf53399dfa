#!/usr/bin/env bash
# usage: layering.sh ROOT
#
# Fails when a layer includes or links what is above it, when FFmpeg is seen outside the media
# layer, or Qt below the queue.
set -euo pipefail
cd "$1"

# Each layer: its folder; the folders that it may include besides its own; what it may see of the
# outside (`std`: the standard library alone); the libraries of ours that it may link. The first
# row that fits a file is the file's.
layers='
src/model           | -                            | std    | boxlift_options
src/engine/media    | model                        | ffmpeg | boxlift_model
src/engine          | engine/media model           | system | boxlift_media
src/worker/protocol | engine/media model           | system | boxlift_media
src/worker          | engine model                 | system | boxlift_engine boxlift_worker_protocol
src/queue           | worker/protocol engine model | qt     | boxlift_engine boxlift_worker_protocol
src/ui              | queue engine model           | qt     | boxlift_queue
'

# Code outside the layers that makes or reads media by itself.
ffmpegOutsiders='^(tests/support|tests/engine/media)/|^tools/boxlift_sample\.cpp$'

ffmpegHeader='^(libav[a-z]+|libsw[a-z]+|libpostproc)/'
qtHeader='^(Q[A-Z]|Qt|QCoro|qcoro|q[a-z]+\.h$)'

violations=0
violation() {
    printf '%s\n' "$1"
    violations=$((violations + 1))
}

# layerOf FILE: sets folder, includes, outside and links from the file's row, or fails.
layerOf() {
    while IFS='|' read -r folder includes outside links; do
        folder=${folder// /} outside=${outside// /}
        [[ -z $folder || $1 != "$folder"/* ]] || return 0
    done <<<"$layers"
    return 1
}

# startsWithFolder PATH FOLDER...
startsWithFolder() {
    local path=$1 prefix
    shift
    for prefix in "$@"; do
        [[ $path != "$prefix"/* ]] || return 0
    done
    return 1
}

# checkOutsideInclude PLACE HEADER: a header that is not the project's.
checkOutsideInclude() {
    if [[ $2 =~ $ffmpegHeader ]]; then
        [[ $outside == ffmpeg ]] || violation "$1: $folder must not see FFmpeg ($2)"
    elif [[ $2 =~ $qtHeader ]]; then
        [[ $outside == qt ]] || violation "$1: $folder must not see Qt ($2)"
    elif [[ $outside == std && ! $2 =~ ^[a-z0-9_]+$ ]]; then
        violation "$1: $folder takes nothing but the standard library ($2)"
    fi
}

checkLayerInclude() {
    local place=$1 quote=$2 header=$3
    if [[ $quote == '<' || $header =~ $ffmpegHeader || $header =~ $qtHeader ]]; then
        checkOutsideInclude "$place" "$header"
    elif [[ $header != *.moc ]] && ! startsWithFolder "$header" "${folder#src/}" $includes; then
        violation "$place: $folder must not include $header"
    fi
}

# Every include of the tree, one by one.
checkIncludes() {
    local directive='^([^:]+):([0-9]+):[[:space:]]*#[[:space:]]*(include|import)[[:space:]]*([<"])([^>"]+)'
    local line file place
    while IFS= read -r line; do
        [[ $line =~ $directive ]] || continue
        file=${BASH_REMATCH[1]} place="$file:${BASH_REMATCH[2]}"
        if [[ $file == src/* ]]; then
            layerOf "$file" || { violation "$place: no layer has this file"; continue; }
            checkLayerInclude "$place" "${BASH_REMATCH[4]}" "${BASH_REMATCH[5]}"
        elif [[ ${BASH_REMATCH[5]} =~ $ffmpegHeader && ! $file =~ $ffmpegOutsiders ]]; then
            violation "$place: only src/engine/media sees FFmpeg"
        fi
    done < <(grep -rnE --include='*.h' --include='*.cpp' --include='*.mm' \
        '^[[:space:]]*#[[:space:]]*(include|import)' $(existingFolders))
}

existingFolders() {
    local name
    for name in src tools tests bench; do
        [[ ! -d $name ]] || printf '%s\n' "$name"
    done
}

# The libraries, ours and others', that a CMakeLists.txt links to its targets, one per line.
linkedLibraries() {
    sed 's/#.*//' "$1" | tr '\n' ' ' | grep -oE 'target_link_libraries *\([^)]*\)' |
        sed -E 's/^[^(]*\( *[^ ]+//; s/\)$//' | tr -s ' ' '\n' || true
}

checkLinks() {
    local file library
    while IFS= read -r file; do
        layerOf "$file" || continue
        while IFS= read -r library; do
            case $library in
            boxlift_options) ;;
            boxlift_*)
                [[ " $links " == *" $library "* ]] || grep -qE "add_library\($library( |\$)" "$file" ||
                    violation "$file: $folder must not link $library" ;;
            PkgConfig::* | libav* | libsw* | av[cdfu]* | sw[rs]*)
                [[ $outside == ffmpeg ]] || violation "$file: $folder must not link $library" ;;
            Qt* | QCoro*)
                [[ $outside == qt ]] || violation "$file: $folder must not link $library" ;;
            esac
        done < <(linkedLibraries "$file")
    done < <(find src -name CMakeLists.txt)
}

[[ -d src ]] || { printf 'there is no folder src in %s\n' "$PWD"; exit 1; }
checkIncludes
checkLinks
exit $((violations > 0))
