#!/bin/sh
# Makes the Debian package of both programs, build/package/selvane_VERSION_ARCHITECTURE.deb.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh --package
cmake --preset package >/dev/null
cmake --build --preset package
cd build/package && cpack
