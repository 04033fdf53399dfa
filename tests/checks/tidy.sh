#!/usr/bin/env bash
# usage: tidy.sh ROOT BUILD
#
# Fails when clang-tidy finds something in the sources of src and tools or in the headers that they
# include. BUILD holds compile_commands.json; what was found clean is remembered there, until the
# source, any header, the way it is compiled or the rules change.
set -euo pipefail
root=$(cd "$1" && pwd)
export build=$2 remembered="$2/tidy"

command -v clang-tidy >/dev/null || { echo 'clang-tidy is not installed'; exit 1; }
[[ -f $build/compile_commands.json ]] || { printf '%s is not configured\n' "$build"; exit 1; }

# Path and command of each of our sources that is compiled, with a tab between them.
compiledSources() {
    sed -nE 's/^ *"(command|file)": "(.*)",?$/\1 \2/p' "$build/compile_commands.json" |
        awk -v root="$root" '
            $1 == "command" { command = $0; next }
            { path = substr($0, 6) }
            index(path, root "/src/") == 1 || index(path, root "/tools/") == 1 {
                print path "\t" command
            }'
}

# What decides on every source's verdict alike.
commonDigest() {
    {
        clang-tidy --version
        cat "$root/.clang-tidy"
        find "$root/src" "$root/tools" -name '*.h' -print0 | sort -z |
            xargs -0 cat
    } | sha256sum
}

# checkSource "PATH<tab>COMMAND". The compiler's own warnings are the compiler's business.
checkSource() {
    local path=${1%%$'\t'*} digest found
    digest=$({ printf '%s\n' "$1" "$common" && cat "$path"; } | sha256sum)
    digest=$remembered/${digest%% *}
    [[ ! -f $digest ]] || return 0
    if found=$(clang-tidy --quiet -p "$build" --extra-arg=-w "$path" 2>&1); then
        touch "$digest"
    else
        printf '%s\n' "$found"
        return 1
    fi
}
export -f checkSource

mkdir -p "$remembered"
find "$remembered" -type f -mtime +30 -delete
common=$(commonDigest)
export common
sources=$(compiledSources)
[[ -n $sources ]] || { printf '%s compiles no source of %s\n' "$build" "$root"; exit 1; }
printf '%s\n' "$sources" | tr '\n' '\0' |
    xargs -0 -n 1 -P "$(getconf _NPROCESSORS_ONLN)" bash -c 'checkSource "$1"' tidy
