# The rows of scripts/bench: each makes its media, runs ours and the peer in turn, and tells.

drive=$root/build/bench/bin/boxlift-drive

convert() {
    rm -f "$work"/out/*
    "$drive" convert --output-dir "$work/out" "$@"
}

# Analysis: a prober is started once for each file.
analyzeFew() { "$drive" analyze "$work/few"; }
probeFew() { find "$work/few" -type f -exec ffprobe -v error -show_format -show_streams {} \;; }
analyzeMore() { "$drive" analyze "$work/more"; }
mediainfoMore() { find "$work/more" -type f -exec mediainfo {} \;; }
analyzeMany() { "$drive" analyze "$work/many"; }

# tellReads KIND FILE: how often the file is opened, and read from. The worker gets it open, under
# whichever number; strace says the path of each number.
tellReads() {
    local file opens reads
    file=$(realpath "$2")
    strace -f -qq -y -o "$work/calls" "$drive" analyze "$file" >>"$log"
    # A call that another thread came between stands in two lines.
    opens=$(grep -cE "open(at2?)?(\(| resumed>).* = [0-9]+<$file>\$" "$work/calls") || true
    reads=$(grep -cE " p?read(v|64)?\([0-9]+<$file>" "$work/calls") || true
    ((opens > 0 && reads > 0)) || fail "$file was not seen to be opened and read."
    tell "  opens and reads of one $1" "$opens, $reads" - - ""
}

rowAnalysis() {
    local extension
    makeSmallFiles few 200
    makeSmallFiles many 10000
    inTurns analyzeFew probeFew
    tellTimes "analysis of 200 files, ffprobe" "50 times as fast"
    # It starts so much faster that with few files our own start would be most of it.
    makeSmallFiles more 1000
    inTurns analyzeMore mediainfoMore
    tellTimes "analysis of 1,000 files, mediainfo" "50 times as fast"
    tell "analysis of 10,000 files" "$(timed analyzeMany | cut -d ' ' -f 1) s" - - "5 s"
    for extension in mp4 mov m4a wav flac; do
        tellReads "${extension^^}" "$work/small.$extension"
    done
}

# Copying.
copyOurs() { convert --target mp4 "$work/large-1024.mov"; }
copyPeer() {
    rm -f "$work"/out/*
    cp --reflink=never "$work/large-1024.mov" "$work/out/copy.mov"
    sync "$work/out/copy.mov"
}

# What the conversion asks of the system: its calls, and the bytes that it writes.
tellCalls() {
    local output calls
    strace -f -qq -o "$work/calls" "$drive" convert --target mp4 --output-dir "$work/out" \
        "$work/large-1024.mov" >>"$log"
    output=$(stat -c %s "$work"/out/*.mp4)
    calls=$(grep -cE '^[0-9]+ +(p?read|p?write)(64|v)?\(' "$work/calls")
    awk '/p?write(64|v)?\(|<\.\.\. p?write/ && / = [0-9]+$/ {sum += $NF} END {printf "%.0f\n", sum}' \
        "$work/calls" >"$work/written"
    tell "  bytes written, of the output's" "$(<"$work/written")" "$output" \
        "$(awk -v o="$output" '{printf "%.4f", $1 / o}' "$work/written")" "at most 1.01"
    tell "  calls that read or write" "$calls" - - ""
}

rowCopy() {
    makeLargeFilm 1024
    inTurns copyOurs copyPeer
    tellTimes "boxlift of 1 GiB MOV to MP4, cp and sync" "at least 0.91"
    rm -f "$work"/out/*
    tellCalls
    rm -f "$work"/out/*
    tell "  resident memory, MiB" "$(peakMemory "$drive" convert --target mp4 --output-dir \
        "$work/out" "$work/large-1024.mov")" - - "under 96"
    rm -f "$work"/out/*
}

# Audio. The peer is the encoder of the same library on one thread, that is, the serial encoding.
aacOurs() { convert --target aac "$work/music-$minutes.flac"; }
aacPeer() {
    ffmpeg -v error -y -i "$work/music-$minutes.flac" -c:a aac -b:a 128k "$work/serial.m4a"
}

# ratioToNoise FILE: the mean of both channels, in decibels. The filter takes energies for
# amplitudes and says twice as many.
ratioToNoise() {
    ffmpeg -nostdin -i "$work/music-$minutes.flac" -i "$1" -lavfi asdr -f null - 2>&1 |
        awk '/SDR ch/ {sum += $(NF - 1); n++} END {printf "%.3f\n", sum / n / 2}'
}

# tellAac MINUTES BUDGET [NOTE]
tellAac() {
    minutes=$1
    makeMusic "$minutes"
    inTurns aacOurs aacPeer
    tellTimes "AAC of $minutes min, ffmpeg on one thread${3:-}" "at least $2"
    tell "  signal-to-noise, dB" "$(ratioToNoise "$work"/out/*.m4a)" \
        "$(ratioToNoise "$work/serial.m4a")" "" "within 0.1"
    tell "  resident memory, MiB" "$(peakMemory "$drive" convert --target aac --output-dir \
        "$work/out" "$work/music-$minutes.flac")" - - ""
}

rowAac() { tellAac 10 1.7; }
rowAac60() { turns=1 tellAac 60 1.85 ", one pair"; }

# Encoding pictures.
reencodeOurs() { convert --target mp4 --size "$size" "$work/$film.mov"; }
reencodePeer() {
    ffmpeg -v error -y -i "$work/$film.mov" -vf "$filters" -c:v libx264 -preset veryfast \
        -crf 17 -maxrate "$rate" -bufsize "$buffer" -profile:v high -pix_fmt yuv420p \
        -c:a aac -b:a 256k "$work/peer.mp4"
}
reencodeHandBrake() {
    HandBrakeCLI -i "$work/$film.mov" -o "$work/peer.mp4" -e x264 --encoder-preset veryfast -q 17 \
        --encoder-profile high -x "vbv-maxrate=${rate%k}:vbv-bufsize=${buffer%k}" \
        --maxHeight "$height" --maxWidth 1920 -E av_aac -B 256
}

toLinear="zscale=transfer=linear:npl=100:primaries=bt709"
toneMap="format=gbrpf32le,tonemap=tonemap=hable:desat=0,\
zscale=transfer=bt709:matrix=bt709:range=limited,format=yuv420p"

# shareOfCores COMMAND...: how much of all cores the command keeps busy.
shareOfCores() {
    timed "$@" | awk -v n="$(nproc)" '{printf "%.3f\n", $2 / $1 / n}'
}

tellReencode() {
    local film=film filters="scale=-2:$height"
    inTurns reencodeOurs reencodePeer
    tellTimes "re-encode 1080p to ${height}p, ffmpeg" "at least 1.1"
    inTurns reencodeOurs reencodeHandBrake
    tellTimes "re-encode 1080p to ${height}p, HandBrakeCLI" "at least 1.1"
}

# tellHighRange [SCALING]: the peer filters as we do.
tellHighRange() {
    local film=high-range filters="$toLinear${1:-},$toneMap"
    inTurns reencodeOurs reencodePeer
    tellTimes "high range 1080p to ${height}p, ffmpeg" "at least 1.1"
}

reencodeMinute() { convert --target mp4 --size p1080 "$work/minute.mov"; }

rowReencode() {
    makeFilm
    makeLongFilm
    makeHighRangeFilm
    tell "re-encode of a minute, share of all cores" "$(shareOfCores reencodeMinute)" - - "above 0.95"
    size=p720 height=720 rate=10000k buffer=20000k tellReencode
    size=p1080 height=1080 rate=20000k buffer=40000k tellReencode
    size=p720 height=720 rate=10000k buffer=20000k \
        tellHighRange ":width=1280:height=720:filter=bicubic:param_a=0:param_b=0.6"
    size=p1080 height=1080 rate=20000k buffer=40000k tellHighRange
}

# What conversions ask of the allocator: a film, and one of five times its length.
rowAllocations() {
    makeLightFilm 6
    makeLightFilm 30
    echo "allocations"
    "$root/build/bench/bin/allocation_counts" "$work/out" "$work/light-6s.mov" "$work/light-30s.mov"
}

# What ten and a hundred times the work costs. Processor seconds hardly depend on other work.

# tellGrowth WHAT UNITS COMMAND...: a line for so many units of work; what one of them costs.
tellGrowth() {
    local -a times
    rm -f "$work"/out/*
    read -ra times <<<"$(timed "${@:3}")"
    rm -f "$work"/out/*
    tell "$1" "${times[0]} s" "${times[1]} s" "$(peakMemory "${@:3}")" \
        "$(awk -v n="$2" '{printf "%.3g ms and %.3g ms each", 1000 * $1 / n, 1000 * $2 / n}' \
            <<<"${times[*]}")"
    rm -f "$work"/out/*
}

rowGrowth() {
    local n
    local -a convert=("$drive" convert --output-dir "$work/out" --target)
    tell "growth" "wall" "processors" "MiB" "for one file, mebibyte, minute, second"
    for n in 100 1000 10000 100000; do
        makeSmallFiles "files-$n" "$n"
        tellGrowth "analysis of $n files" "$n" "$drive" analyze "$work/files-$n"
    done
    for n in 10 100 1024; do
        makeLargeFilm "$n"
        tellGrowth "boxlift of $n MiB" "$n" "${convert[@]}" mp4 "$work/large-$n.mov"
    done
    for n in 1 10 100; do
        makeMusic "$n"
        tellGrowth "AAC of $n min" "$n" "${convert[@]}" aac "$work/music-$n.flac"
    done
    for n in 1.2 12 120; do
        repeatFilm "film-$n" "$n"
        tellGrowth "re-encode of $n s to 720p" "$n" "${convert[@]}" mp4 --size p720 "$work/film-$n.mov"
    done
    makeHours
    tell "AAC of 10 hours" - - "$(peakMemory "${convert[@]}" aac "$work/hours.mp4")" ""
    rm -f "$work"/out/*
    measureWindow --cards 100 1000 10000
}

# The list: a table of its own.
rowQueue() { "$root/build/bench/bin/queue_scale" "$@"; }

# measureWindow ARGUMENT...: a table of its own.
measureWindow() {
    /usr/bin/python3 "$root/bench/window.py" "$root/build/bench/bin" "$root/build/bench/window" "$@"
}

rowWindow() {
    makeMusic 10
    measureWindow "$work/music-10.flac"
}

# How soon what is stopped has ended: a table of its own.
rowStop() {
    makeLargeFilm 1024
    makeLongFilm
    makeMusic 10
    makeForeignFilm
    /usr/bin/python3 "$root/bench/stop.py" "$root/build/bench/bin" "$root/build/bench/window" \
        "$work/minute.mov" "$work/large-1024.mov" "$work/music-10.flac" "$work/foreign.mov"
}

# rowSettings [FILM...]: a table of its own.
rowSettings() {
    if (($# == 0)); then
        makeFilm
        set -- "$work/film.mov"
    fi
    /usr/bin/python3 "$root/bench/encoder_settings.py" "$work/out" "$@"
}
