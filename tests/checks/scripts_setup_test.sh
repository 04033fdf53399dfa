#!/usr/bin/env bash
# Runs scripts/setup on a made-up system: a PATH that holds only the programs that this test puts
# there.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/planting.sh"

mkdir -p "$tree/bin" "$tree/scripts"
cp "$checks/../../scripts/setup" "$checks/../../scripts/common.sh" "$tree/scripts"
for program in bash cat dirname env grep mktemp rm tail; do
    ln -s "$(command -v "$program")" "$tree/bin/$program"
done

# program NAME BODY: puts a made-up program there.
program() {
    plant "bin/$1" "#!/usr/bin/env bash
$2"
    chmod +x "$tree/bin/$1"
}

# setUp SECTION...: runs the script from another folder, with nothing done before.
setUp() {
    rm -f "$tree/done"
    status=0
    output=$(cd / && PATH="$tree/bin" "$tree/scripts/setup" "$@" 2>&1) || status=$?
    installed=$(cat "$tree/done" 2>/dev/null || true)
}

# expect WHAT STATUS OUTPUT INSTALLED
expect() {
    [[ $status == "$2" && $output == "$3" && $installed == "$4" ]] ||
        report "$1 (status $status, done: $installed)"
}

plant packaging/packages '# A comment.
build: compiler
build: library-dev

test: checker
bench: ruler'
aptGet="case \" \$* \" in *' install '*) echo \"\${@: -2}\" >>'$tree/done' ;; esac"
# dpkg-query -W -f FORMAT NAME...: of a system on which "checker" was removed.
program dpkg-query 'while read -r name state; do
    line=${3//\$\{Package\}/$name}
    line=${line//\$\{db:Status-Status\}/$state}
    printf "%b" "${line//\$\{Version\}/1.0}"
done <<<"compiler installed
library-dev installed
spell-checker installed
checker config-files"
exit 1'
program id 'echo 0'

setUp
expect 'nothing is missing: silence, without any apt-get' 0 '' ''
setUp test
expect 'no apt-get' 1 \
    'setup: cannot install checker, because this system has no apt-get.' ''
program apt-get "$aptGet"
setUp test
expect 'what is not installed any more is installed' 0 '' '--no-install-recommends checker'
setUp build test bench
expect 'several sections' 0 '' 'checker ruler'
setUp run
expect 'a section without packages' 0 '' ''
setUp tests
expect 'an unknown section' 2 \
    'setup: there is no section "tests"; usage: scripts/setup [build|run|desktop|test|package|bench|fuzz ...]' ''

program id 'echo 1000'
setUp test
expect 'neither root nor sudo' 1 \
    'setup: cannot install checker, because that takes root and there is no sudo.' ''
program sudo "echo sudo >>'$tree/done'; exec \"\$@\""
setUp test
expect 'with sudo' 0 '' 'sudo
sudo
--no-install-recommends checker'

program apt-get 'echo "E: Temporary failure resolving deb.example"; exit 100'
program id 'echo 0'
setUp test
expect 'no network' 1 'E: Temporary failure resolving deb.example
E: Temporary failure resolving deb.example
setup: apt-get could not install checker; is the network reachable?' ''
program apt-get "case \" \$* \" in *' update '*) exit 100 ;; esac
$aptGet"
setUp test
expect 'only the lists cannot be refreshed' 0 '' '--no-install-recommends checker'

exit $((failures > 0))
