# For the tests of the checks: a small tree in a folder of its own, in which violations are planted.
# The test that sources this sets `check`, the command to try.

checks=$(CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
temporary=$(mktemp -d)
trap 'rm -rf "$temporary"' EXIT
tree="$temporary/a tree"
mkdir "$tree"
failures=0

# plant FILE TEXT: writes a file of the tree.
plant() {
    mkdir -p "$(dirname "$tree/$1")"
    printf '%s\n' "$2" >"$tree/$1"
}

# tryCheck: runs the check and keeps what it prints, in `output`, and its exit status.
tryCheck() {
    status=0
    output=$("${check[@]}" 2>&1) || status=$?
}

report() {
    printf 'FAILED: %s; the check said:\n%s\n' "$1" "$output"
    failures=$((failures + 1))
}

# expectPass WHAT: the tree as it is has nothing to complain about.
expectPass() {
    tryCheck
    [[ $status == 0 ]] || report "$1 should pass"
}

# expectViolation TEXT FILE CONTENT: with this file the check fails and prints the text. The file
# is put back afterwards.
expectViolation() {
    local before=
    [[ ! -f $tree/$2 ]] || before=$(cat "$tree/$2")
    plant "$2" "$3"
    tryCheck
    [[ $status != 0 && $output == *"$1"* ]] || report "$2 with \"$3\" should be found (\"$1\")"
    if [[ -n $before ]]; then plant "$2" "$before"; else rm "$tree/$2"; fi
}
