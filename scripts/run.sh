#!/bin/sh
# Sets up, builds and runs the whole way on samples/: from a taxonomy and literature to rules.
# The results go to a fresh folder, or to the one named as the argument.
# With --gui as the first argument it opens the workbench instead, on a copy of the samples in that folder.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
program=selvane-cli
if [ "${1:-}" = --gui ]; then
  program=selvane
  shift
fi
"$root/scripts/setup.sh"
cmake -S "$root" -B "$root/build/run" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build "$root/build/run" --target selvane-cli $program
cli="$root/build/run/src/selvane-cli"

folder=${1:-$(mktemp -d "${TMPDIR:-/tmp}/selvane-run-XXXXXX")}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
cd "$folder"
if [ $program = selvane ]; then
  cp -r "$root/samples/taxonomy.xml" "$root/samples/abstracts" .
  echo "The samples are in $folder. docs/guide.md walks through the windows."
  exec "$root/build/run/src/selvane" "$folder"
fi
say() { printf '\n%s\n' "$*"; }

say "1. The taxonomy file becomes a taxonomy database:"
"$cli" taxonomy load "$root/samples/taxonomy.xml" tax.mdb
say "2. Tagged abstracts become a term table, a row an abstract and a column a term:"
"$cli" terms build --taxonomy tax.mdb --output terms.mdb "$root/samples/abstracts"
say "3. Rules over the terms alone:"
"$cli" rules extract terms.mdb --taxonomy tax.mdb --output plain.mdb \
  --min-support 0.2 --min-confidence 0.7 --no-generalize
"$cli" rules show plain.mdb --taxonomy tax.mdb --sort confidence
say "4. Rules over the terms and all that the taxonomy has above them; the strongest twenty:"
"$cli" rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support 0.2 --min-confidence 0.7
"$cli" rules show rules.mdb --taxonomy tax.mdb --sort confidence --limit 20
say "5. From a PubMed search and MeSH headings to the documents of a rule, and to its exceptions:"
"$cli" taxonomy load "$root/samples/headings.txt" mesh.mdb
"$cli" terms build --taxonomy mesh.mdb --output search.mdb --terms all --leave-out Humans \
  "$root/samples/search.nbib" "$root/samples/marks.pubtator"
"$cli" rules extract search.mdb --taxonomy mesh.mdb --output found.mdb --min-support 0.3 --min-confidence 0.8
"$cli" rules documents found.mdb --taxonomy mesh.mdb --terms search.mdb --rule 8
"$cli" rules documents found.mdb --taxonomy mesh.mdb --terms search.mdb --rule 8 --exceptions

cat <<END

The results are in $folder. What to try next, in that folder:
  PATH=$root/build/run/src:\$PATH
  selvane-cli rules list rules.mdb                                       how the rules were made
  selvane-cli rules show rules.mdb --taxonomy tax.mdb --format csv       all figures, for a spreadsheet
  selvane-cli taxonomy prune tax.mdb D.02                                leave the chemical classes out,
  selvane-cli rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --overwrite --min-support 0.2
  selvane-cli taxonomy restore tax.mdb                                   and bring them back
The same in windows: scripts/run.sh --gui opens the workbench on the samples, docs/guide.md walks through it.
Your own abstracts: samples/README.md and docs/formats/ say what they must look like.
END
