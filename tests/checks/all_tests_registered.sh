#!/usr/bin/env bash
# usage: all_tests_registered.sh ROOT
#
# Fails when a source file is in no CMakeLists.txt (a test file must be in its own folder's, any
# other in its folder's or one above), when a listed source does not exist, or when a folder with a
# CMakeLists.txt is not added by a folder above.
set -euo pipefail
cd "$1"

violations=0
violation() {
    printf '%s\n' "$1"
    violations=$((violations + 1))
}

# The words of a CMakeLists.txt, one per line, without comments.
words() {
    sed 's/#.*//' "$1" | tr -s '()" \t' '\n'
}

# isListed FILE FOLDER: whether the folder's CMakeLists.txt names the file.
isListed() {
    [[ -f $2/CMakeLists.txt ]] && words "$2/CMakeLists.txt" | grep -xF -- "${1#"$2"/}" >/dev/null
}

isListedHereOrAbove() {
    local folder=$1
    while [[ $folder == */* ]]; do
        folder=${folder%/*}
        ! isListed "$1" "$folder" || return 0
    done
    return 1
}

checkSources() {
    local file
    while IFS= read -r file; do
        case $file in
        *_test.cpp)
            isListed "$file" "${file%/*}" ||
                violation "$file is not in the CMakeLists.txt of its folder" ;;
        *)
            isListedHereOrAbove "$file" || violation "$file is in no CMakeLists.txt" ;;
        esac
    done < <(find src tools tests -name '*.cpp')
}

checkListed() {
    local list listed folder
    while IFS= read -r list; do
        folder=${list%/*}
        while IFS= read -r listed; do
            [[ -f $folder/$listed ]] || violation "$list names $listed, which does not exist"
        done < <(words "$list" | grep -E '\.(cpp|mm)$' | grep -vF '$' || true)
        isAdded "$folder" || violation "$folder is not added by a CMakeLists.txt above it"
    done < <(find src tools tests -name CMakeLists.txt)
}

# isAdded FOLDER: whether a CMakeLists.txt above it adds it.
isAdded() {
    local above=$1
    while [[ $above != . ]]; do
        above=$(dirname "$above")
        [[ -f $above/CMakeLists.txt ]] || continue
        ! sed 's/#.*//' "$above/CMakeLists.txt" |
            grep -E "add_subdirectory\( *\"?$(relativeTo "$1" "$above")\"?[ )]" >/dev/null || return 0
    done
    return 1
}

relativeTo() {
    [[ $2 == . ]] && printf '%s' "$1" || printf '%s' "${1#"$2"/}"
}

[[ -d src && -d tools && -d tests ]] || { printf '%s has no sources\n' "$PWD"; exit 1; }
checkSources
checkListed
exit $((violations > 0))
