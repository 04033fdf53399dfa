# The media of scripts/bench, made once and kept in build/bench-media.

# makeOnce FILE COMMAND...: runs the command with an unfinished file's name behind it.
makeOnce() {
    local file=$1 unfinished=${1%/*}/unfinished-${1##*/}
    shift
    [[ -e $file ]] && return
    rm -f "$unfinished"
    "$@" "$unfinished" >>"$log" 2>&1 || fail "cannot make ${file##*/}."
    mv "$unfinished" "$file"
}

# Struck chords and hisses, different ones left and right: long and short windows both.
chords="0.3*sin(2*PI*220*t)*exp(-2*mod(t,0.5))+0.1*sin(2*PI*(660+220*mod(floor(t),3))*t)"
hisses="0.3*(random(0)-0.5)*exp(-40*mod(t,0.31))+0.01*(random(1)-0.5)"
music="aevalsrc='$chords+$hisses|0.8*($chords)+0.3*(random(2)-0.5)*exp(-40*mod(t+0.1,0.47))':s=44100"

# makeMusic MINUTES: a FLAC file.
makeMusic() {
    makeOnce "$work/music-$1.flac" ffmpeg -v error -f lavfi -i "$music:d=$(($1 * 60))" \
        -sample_fmt s16
}

# Ten hours of it.
makeHours() {
    makeMusic 100
    makeOnce "$work/hours.mp4" ffmpeg -v error -stream_loop 5 -i "$work/music-100.flac" \
        -c copy -strict experimental
}

picture="testsrc2=size=1920x1080:rate=30,noise=alls=12:allf=t"

makeFilm() {
    makeOnce "$work/film.mov" ffmpeg -v error -f lavfi -i "$picture" -f lavfi -i "$music" -t 12 \
        -c:v libx264 -preset ultrafast -b:v 40M -maxrate 40M -bufsize 40M -pix_fmt yuv420p \
        -c:a aac -b:a 256k
}

# Its whites shine with 400 cd/m², four times what standard range has.
highRange="setparams=color_primaries=bt709:color_trc=bt709:colorspace=bt709:range=limited,\
zscale=transfer=smpte2084:primaries=bt2020:matrix=bt2020nc:npl=400,format=yuv420p10le"

# Six seconds of such pictures with high dynamic range, as HEVC. The tags of frames do not reach the
# encoder.
makeHighRangeFilm() {
    makeOnce "$work/high-range.mov" ffmpeg -v error -f lavfi -i "$picture,$highRange" \
        -f lavfi -i "$music" -t 6 -c:v libx265 -preset ultrafast -x265-params log-level=error \
        -b:v 25M -tag:v hvc1 -color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc \
        -color_range tv -c:a aac -b:a 256k
}

# repeatFilm NAME SECONDS: the film over and over, or only its beginning.
repeatFilm() {
    makeFilm
    makeOnce "$work/$1.mov" ffmpeg -v error -stream_loop -1 -i "$work/film.mov" -c copy -t "$2"
}

# A minute of it.
makeLongFilm() { repeatFilm minute 60; }

# A minute of it as MPEG-4 Part 2: no target takes such pictures as they are.
makeForeignFilm() {
    makeFilm
    makeOnce "$work/foreign-12.mov" ffmpeg -v error -i "$work/film.mov" -c:v mpeg4 -q:v 4 -c:a copy
    makeOnce "$work/foreign.mov" ffmpeg -v error -stream_loop -1 -i "$work/foreign-12.mov" \
        -c copy -t 60
}

# makeLightFilm SECONDS: no compressed picture of it takes as much memory as a picture. Two seconds
# from key frame to key frame.
makeLightFilm() {
    makeOnce "$work/light-$1s.mov" ffmpeg -v error -f lavfi -i "$picture" -t "$1" \
        -c:v libx264 -g 60 -preset ultrafast -b:v 8M -maxrate 8M -bufsize 2M -pix_fmt yuv420p
}

# makeLargeFilm MEBIBYTES: the film over and over.
makeLargeFilm() {
    makeFilm
    makeOnce "$work/large-$1.mov" ffmpeg -v error -stream_loop -1 -i "$work/film.mov" -c copy \
        -fs $(($1 << 20))
}

# makeSmallFiles NAME COUNT: a folder with that many files, in turn MP4, MOV, M4A, WAV and FLAC.
makeSmallFiles() {
    local i extension
    local -a extensions=(mp4 mov m4a wav flac)
    for extension in "${extensions[@]}"; do
        makeOnce "$work/small.$extension" ffmpeg -v error -f lavfi -i "$music" -f lavfi \
            -i testsrc=size=320x240:rate=25 -t 2 $([[ $extension == mp4 || $extension == mov ]] || echo -vn)
    done
    [[ -e $work/$1 ]] && return
    mkdir "$work/unfinished"
    for ((i = 0; i < $2; i++)); do
        extension=${extensions[i % 5]}
        ln "$work/small.$extension" "$work/unfinished/$i.$extension"
    done
    mv "$work/unfinished" "$work/$1"
}
