#!/bin/sh
# Runs clang-tidy over all sources, tests, benchmarks, fuzz targets and the program that takes the pictures.
# Arguments are parts of paths, as regular expressions, and narrow it: scripts/lint.sh src/ui tests/ui
# LINT_JOBS says how many files at a time, by default as many as there are processors.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh --lint
cmake --preset lint >/dev/null
[ $# -gt 0 ] || set -- "^$PWD/(src|tests|bench|fuzz|scripts)/"
run-clang-tidy -quiet -p build/lint -j "${LINT_JOBS:-$(nproc)}" "$@"
