#!/bin/sh
# Sets up, builds with sanitizers and warnings as errors, and passes all tests.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset ci
cmake --build --preset ci
ctest --preset ci -j "$(nproc)"
find src tests bench -name '*.h' -o -name '*.cpp' | xargs clang-format --dry-run --Werror
