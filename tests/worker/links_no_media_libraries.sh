#!/usr/bin/env bash
# usage: links_no_media_libraries.sh PROGRAM... WORKER
#
# Fails when a program loads FFmpeg's libraries, or the worker, which must, does not.
set -euo pipefail

loads() {
    readelf --dynamic "$1" | grep -qE 'NEEDED.*lib(av|sw)[a-z]+\.so'
}

worker=${!#}
loads "$worker" || { echo "$worker should load FFmpeg's libraries: can this test tell?"; exit 1; }
for program in "${@:1:$#-1}"; do
    ! loads "$program" || { echo "$program loads FFmpeg's libraries"; exit 1; }
done
