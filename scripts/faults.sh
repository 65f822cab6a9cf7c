#!/bin/bash
# Everything that takes long of tests/faults/: all calls of all commands, many processes at once, and, on a
# taxonomy file of full size, random kills, power cuts and full disks. The last two need an administrator's
# rights to mount and are left out without them. What fails ends it with a word.
#
#   scripts/faults.sh [TAXONOMY.xml [ROUNDS [PART...]]]
#
# The file is the sample's and there are 20 rounds when left out; the parts are kills, power_cuts, full_disks and
# walks. With SELVANE_BUILT the programs of that build folder are tried.
set -eEuo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
taxonomy=$(realpath "${1:-${SELVANE_MESH:-$root/samples/taxonomy.xml}}")
rounds=${2:-20}
if [ -z "${SELVANE_BUILT:-}" ]; then
  "$root/scripts/setup.sh"
  cmake -S "$root" --preset release -DSELVANE_WINDOWS=OFF >/dev/null
  cmake --build "$root/build/release" --target selvane-cli fault_walk
fi
build=${SELVANE_BUILT:-$root/build/release}
cli=$build/src/selvane-cli
folder=$(mktemp -d "${TMPDIR:-/tmp}/selvane-faults-XXXXXX")
mounted=()
clean_up() {
  for mount in "${mounted[@]}"; do umount "$mount" 2>/dev/null || true; done
  rm -rf "$folder"
}
trap clean_up EXIT
trap 'echo "faults: line $LINENO failed" >&2' ERR
fail() { echo "faults: $*" >&2; exit 1; }
check_empty() { [ -z "$(ls -A "$1")" ] || fail "$2 left $(ls -A "$1")"; }

cd "$folder"
"$cli" taxonomy load "$taxonomy" whole.mdb 2>/dev/null
"$cli" taxonomy list whole.mdb >whole
cp whole.mdb pruned.mdb
"$cli" taxonomy prune pruned.mdb C 2>/dev/null
"$cli" taxonomy list pruned.mdb >pruned
[ "$(cmp whole pruned >/dev/null; echo $?)" -eq 1 ] || fail "pruning C changed nothing"
# Old, new or, of a file that is made, absent.
check_listed() {  # DATABASE WHAT
  "$cli" taxonomy list "$1" >now 2>said || fail "$2: $(cat said)"
  cmp -s now whole || cmp -s now pruned || fail "$2: neither the old nor the new taxonomy"
}

walks() {
  echo "== All calls (of memory 1,000 of each command)"
  "$build/tests/fault_walk" --points 1000
  echo "== Many processes"
  "$root/tests/faults/crowd.sh" "$cli" "$rounds"
}

# Runs it for a random part of the time that a load takes, divided by this, and kills it.
killed_within() {  # DIVISOR COMMAND...
  local micros=$((took / 1000 * (RANDOM % 1000) / 1000 / $1))
  shift
  "$@" 2>/dev/null & local run=$!
  sleep "$((micros / 1000000)).$(printf %06d $((micros % 1000000)))"
  kill -KILL $run 2>/dev/null || true
  wait $run 2>/dev/null || true
}

took=0
kills() {
  local start round
  start=$(date +%s%N)
  "$cli" taxonomy load "$taxonomy" timed.mdb 2>/dev/null
  took=$(($(date +%s%N) - start))
  mkdir -p kills && cd kills
  for round in $(seq "$rounds"); do
    rm -f ./*
    killed_within 1 "$cli" taxonomy load "$taxonomy" tax.mdb
    if [ -e tax.mdb ]; then cmp tax.mdb ../whole.mdb; else "$cli" taxonomy load "$taxonomy" tax.mdb 2>../said || fail "$(cat ../said)"; fi
    cmp tax.mdb ../whole.mdb || fail "a killed load spoils the next"
    [ "$(ls -A)" = tax.mdb ] || fail "a killed load left $(ls -A)"
    killed_within 3 "$cli" taxonomy prune tax.mdb C
    (cd .. && check_listed kills/tax.mdb "killed prune")
    killed_within 2 "$cli" taxonomy restore tax.mdb
    (cd .. && check_listed kills/tax.mdb "killed restore")
  done
  cd ..
  echo "== Random kills: $rounds loads, prunings and restorings, 0 faults"
}

# What a disk holds at this moment, mounted as after a power cut.
cut_power() {
  cp disk after
  mount -o loop after cut
}

power_cuts() {
  truncate -s 256M disk && mkdir -p on cut
  mkfs.ext4 -q disk
  mount -o loop,noauto_da_alloc disk on || { echo "== Power cuts: left out, this machine cannot mount images"; return; }
  mounted+=("$folder/on" "$folder/cut")
  local round program=("$cli") lost=0
  for round in $(seq "$rounds") unsynced; do
    # Without syncs files must be lost, or this would show nothing.
    if [ "$round" = unsynced ]; then program=("$build/tests/fault_walk" --no-sync); fi
    rm -f on/tax.mdb* && sync -f on/.
    "${program[@]}" taxonomy load "$taxonomy" on/tax.mdb 2>/dev/null
    cut_power
    cmp -s cut/tax.mdb whole.mdb || lost=$((lost + 1))
    umount cut
    if [ "$round" = unsynced ]; then break; fi
    [ $lost -eq 0 ] || fail "a power cut after a load lost the taxonomy"
    "$cli" taxonomy prune on/tax.mdb C 2>/dev/null & local run=$!
    sleep "0.$((RANDOM % 300 + 100))" && kill -STOP $run 2>/dev/null || true
    cut_power
    check_listed cut/tax.mdb "power cut in a pruning"
    umount cut
    kill -CONT $run 2>/dev/null || true
    wait $run
    cut_power
    "$cli" taxonomy list cut/tax.mdb | cmp - pruned || fail "a power cut after a pruning lost it"
    umount cut
  done
  [ $lost -eq 1 ] || fail "a power cut without syncs lost nothing: this test shows nothing"
  echo "== Power cuts: $((3 * rounds)), 0 faults; one without syncs lost the file"
}

full_disks() {
  mkdir -p small
  local size refused=0 made=0
  local needed=$(($(stat -c %s whole.mdb) / 1024))
  for size in $(seq 4 $((needed / rounds + 1)) $((needed * 2))); do
    mount -t tmpfs -o "size=${size}k" tmpfs small || { echo "== Full disks: left out, this machine cannot mount"; return; }
    mounted+=("$folder/small")
    if "$cli" taxonomy load "$taxonomy" small/tax.mdb 2>said; then
      made=$((made + 1))
      cmp small/tax.mdb whole.mdb || fail "a disk of $size KB gave another taxonomy"
      "$cli" taxonomy prune small/tax.mdb C 2>/dev/null || true
      check_listed small/tax.mdb "a full disk of $size KB"
    else
      refused=$((refused + 1))
      grep -q 'tax.mdb: .*full' said || fail "$(cat said)"
      check_empty small "a full disk of $size KB"
    fi
    umount small
  done
  echo "== Full disks: $refused refused, $made made, 0 faults"
}

shift $(($# < 2 ? $# : 2))
for part in "${@:-kills power_cuts full_disks walks}"; do for step in $part; do $step; done; done
