# What the rows of scripts/bench share: turns of two commands, and the table that they fill.

turns=${BOXLIFT_BENCH_TURNS:-3}
work=$root/build/bench-media
log=$root/build/bench-run.log

# timed COMMAND...: prints wall and processor seconds. What the command writes goes to the log.
timed() {
    local TIMEFORMAT='%R %U %S' times
    if ! times=$({ time "$@" >>"$log" 2>&1; } 2>&1); then
        fail "$1 failed; build/bench-run.log has what it said."
    fi
    awk '{print $1, $2 + $3}' <<<"$times"
}

# median COLUMN FILE
median() {
    awk -v c="$1" '{print $c}' "$2" | sort -g | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'
}

# inTurns OURS PEER: runs the two functions in turn, A B A B; a line of each pair's ours and peer,
# wall and processor seconds, and the ratio of the wall times, is left in $pairs.
inTurns() {
    pairs=$work/pairs
    : >"$pairs"
    local i ours peer
    for ((i = 0; i < turns; i++)); do
        rm -rf "$work/out" && mkdir -p "$work/out"
        ours=$(timed "$1")
        peer=$(timed "$2")
        awk '{print $1, $2, $3, $4, $3 / $1}' <<<"$ours $peer" >>"$pairs"
    done
}

# tell WHAT OURS PEER RATIO BUDGET: a line of the table.
tell() {
    printf '%-46s %14s %14s %8s   %s\n' "$@"
}

# tellTimes WHAT BUDGET: two lines from the last turns, of wall and of processor seconds. The ratio
# says how many times as fast as the peer.
tellTimes() {
    local -a cpu
    tell "$1" "$(median 1 "$pairs") s" "$(median 3 "$pairs") s" "$(median 5 "$pairs")" "$2"
    cpu=("$(median 2 "$pairs")" "$(median 4 "$pairs")")
    tell "  processor seconds" "${cpu[0]}" "${cpu[1]}" \
        "$(awk '{printf "%.3g", $2 / $1}' <<<"${cpu[*]}")" ""
}

# residentMemory PID: of it and its workers together, in KiB, what they share counted once.
residentMemory() {
    local workers
    workers=$(cat "/proc/$1"/task/*/children 2>/dev/null) || true
    # Names of files under /proc have no spaces in them.
    cat $(printf '/proc/%s/smaps_rollup ' "$1" $workers) 2>/dev/null |
        awk '/^Pss:/ {sum += $2} END {print sum + 0}'
}

# peakMemory COMMAND...: the most memory that the command and its workers had resident, in MiB.
peakMemory() {
    local pid peak=0 now
    "$@" >>"$log" 2>&1 &
    pid=$!
    while now=$(residentMemory "$pid") && ((now > 0)); do
        peak=$((now > peak ? now : peak))
        sleep 0.02
    done
    wait "$pid" || fail "$1 failed; build/bench-run.log has what it said."
    echo $((peak / 1024))
}
