# What the scripts of this folder share; each of them sources it.

root=$(CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

# fail SENTENCE [STATUS]: says what is wrong and ends the script.
fail() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit "${2:-1}"
}

# listPackages SECTION...: what packaging/packages has for them, one per line.
listPackages() {
    local section package
    while read -r section package; do
        case " $* " in *" ${section%:} "*) printf '%s\n' "$package" ;; esac
    done <"$root/packaging/packages"
}

# Presets that changed since the last configuration count only after a new one.
configurePreset() {
    local ninja="$root/build/$1/build.ninja"
    [[ -f $ninja && $ninja -nt $root/CMakePresets.json ]] || cmake --preset "$1"
}

# buildPreset PRESET: configures where needed and builds. Quiet unless that fails.
buildPreset() {
    local log="$root/build/$1.log"
    mkdir -p "$root/build"
    if ! (cd "$root" && configurePreset "$1" && cmake --build --preset "$1") >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        fail "the build of the preset $1 failed; build/$1.log has all of its output."
    fi
}

# testPreset PRESET [ARGUMENT...]: runs the tests of a preset that is built, the arguments are
# ctest's.
testPreset() {
    local preset=$1
    shift
    (cd "$root" && ctest --preset "$preset" --parallel "$(getconf _NPROCESSORS_ONLN)" "$@")
}
