#!/usr/bin/env bash
# usage: format.sh ROOT
#
# Fails when clang-format would change a source file.
set -euo pipefail
cd "$1"

command -v clang-format >/dev/null || { echo 'clang-format is not installed'; exit 1; }

sources() {
    find src tools tests bench \( -name '*.h' -o -name '*.cpp' -o -name '*.mm' \) -print0 2>/dev/null ||
        true # not every folder is there
}

[[ $(sources | head -c 1 | wc -c) -gt 0 ]] || { printf '%s has no sources\n' "$PWD"; exit 1; }
sources | xargs -0 -n 10 -P "$(getconf _NPROCESSORS_ONLN)" clang-format --dry-run --Werror
