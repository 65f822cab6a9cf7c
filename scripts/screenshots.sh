#!/bin/sh
# Takes the pictures of the user guide again, without a display: docs/pictures/, or the folder of the first
# argument. More arguments go to the program: --dark, --width N.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
cmake -S "$root" -B "$root/build/run" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build "$root/build/run" --target selvane-screenshots
folder=${1:-$root/docs/pictures}
[ $# -eq 0 ] || shift
mkdir -p "$folder"
QT_QPA_PLATFORM=offscreen "$root/build/run/src/selvane-screenshots" "$@" "$root/samples" "$folder"
ls "$folder"
