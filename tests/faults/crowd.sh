#!/bin/sh
# Many processes at once: readers beside a writer, two that replace one output, twenty extractions.
# crowd.sh SELVANE-CLI [ROUNDS]
set -eu
cli=$(realpath "$1")
rounds=${2:-3}
samples=$(cd "$(dirname "$0")/../../samples" && pwd)
folder=$(mktemp -d "${TMPDIR:-/tmp}/selvane-crowd-XXXXXX")
trap 'rm -rf "$folder"' EXIT
cd "$folder"
fail() { echo "crowd: $*" >&2; exit 1; }
# In words, and by no signal.
check_refusal() {
  [ "$1" -eq 1 ] && grep -q '^selvane-cli: ' "$2" || fail "status $1: $(cat "$2")"
}
# An extraction has its inputs and the itemset file of its user to itself.
extract() {  # USER OUTPUT OPTIONS...
  user=$1 output=$2; shift 2
  [ -e "tax$user.mdb" ] || { cp tax.mdb "tax$user.mdb"; cp terms.mdb "terms$user.mdb"; }
  XDG_STATE_HOME=$folder/state$user "$cli" rules extract "terms$user.mdb" --taxonomy "tax$user.mdb" --output "$output" "$@"
}

"$cli" taxonomy load "$samples/taxonomy.xml" tax.mdb 2>/dev/null
"$cli" terms build --taxonomy tax.mdb --output terms.mdb "$samples/abstracts" 2>/dev/null
"$cli" taxonomy list tax.mdb >full
cp tax.mdb changing.mdb

answered=0 refused=0
for round in $(seq "$rounds"); do
  (for code in D.02 E C; do "$cli" taxonomy prune changing.mdb $code 2>/dev/null || :
    "$cli" taxonomy restore changing.mdb 2>/dev/null || :; done) &
  writer=$!
  readers=
  for reader in 1 2 3 4 5 6 7 8 9 10; do
    (status=0; "$cli" taxonomy list changing.mdb >list$reader 2>said$reader || status=$?; echo $status >status$reader) &
    readers="$readers $!"
  done
  wait $readers $writer
  for reader in 1 2 3 4 5 6 7 8 9 10; do
    if [ "$(cat status$reader)" -eq 0 ]; then answered=$((answered + 1)); else
      check_refusal "$(cat status$reader)" said$reader
      refused=$((refused + 1))
    fi
  done
  "$cli" taxonomy restore changing.mdb 2>/dev/null
  "$cli" taxonomy list changing.mdb | cmp - full || fail "a taxonomy has changed"
done
echo "readers beside a writer: $answered answered, $refused refused in words"

made=0
for round in $(seq "$rounds"); do
  rm -f rules.mdb Inforules.dat
  extract a rules.mdb --min-support 0.2 2>/dev/null
  extract a rules.mdb --min-support 0.2 --overwrite 2>said1 & one=$!
  extract b rules.mdb --min-support 0.3 --overwrite 2>said2 & two=$!
  for run in $one $two; do
    status=0; wait $run || status=$?
    if [ $status -eq 0 ]; then made=$((made + 1)); fi
    [ $status -le 1 ] || fail "a replacer ended with $status"
  done
  "$cli" rules list rules.mdb >/dev/null || fail "a pair is mixed"
done
[ $made -ge "$rounds" ] || fail "only $made of $rounds replacers"
echo "two replacers of one output: $made of $((2 * rounds)) made it, no pair mixed"

runs="1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20"
extract one first.mdb --min-support 0.2 2>/dev/null
children=
for run in $runs; do
  mkdir own$run
  (status=0; extract "$run" own$run/rules.mdb --min-support 0.2 2>said$run || status=$?; echo $status >status$run) &
  children="$children $!"
done
wait $children
own=0
for run in $runs; do
  if [ "$(cat status$run)" -eq 0 ]; then
    own=$((own + 1))
    cmp first.mdb own$run/rules.mdb || fail "extractions differ"
  else
    check_refusal "$(cat status$run)" said$run
  fi
done
children=
for run in $runs; do
  (status=0; extract "$run" shared.mdb --min-support 0.2 2>said$run || status=$?; echo $status >status$run) &
  children="$children $!"
done
wait $children
shared=$(cat status? status?? | grep -c '^0$')
[ "$own" -eq 20 ] && [ "$shared" -eq 1 ] || fail "$own to their own outputs, $shared to one"
left=$(ls | grep -c -e '\.part' -e '\.lock$' -e '-journal$' || :)
[ "$left" -eq 0 ] || fail "left: $(ls)"
echo "twenty extractions: $own to their own outputs, one to a shared one"
