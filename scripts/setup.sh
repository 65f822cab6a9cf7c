#!/bin/sh
# Installs what building and testing need from the system's packages; with --lint also what scripts/lint.sh
# needs, with --package what scripts/package.sh needs. Does nothing when all is there.
set -eu
packages="g++ cmake ninja-build sqlite3 libsqlite3-dev libfmt-dev libcli11-dev nlohmann-json3-dev libpugixml-dev libxxhash-dev pkg-config
          libexpat1-dev zlib1g-dev libroaring-dev
          libgtest-dev libgmock-dev libbenchmark-dev clang-format
          qt6-base-dev libqt6svg6 fonts-dejavu-core"
for argument; do
  case $argument in
    --lint) packages="$packages clang clang-tidy" ;;
    --package) packages="$packages dpkg-dev file" ;;
    *) echo "usage: setup.sh [--lint] [--package]" >&2; exit 2 ;;
  esac
done
missing=""
for package in $packages; do
  if ! dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -q '^installed$'; then
    missing="$missing $package"
  fi
done
[ -n "$missing" ] || exit 0
echo "Installing:$missing"
run=""
if [ "$(id -u)" -ne 0 ]; then
  run="sudo"
fi
$run env DEBIAN_FRONTEND=noninteractive apt-get update -qq
# shellcheck disable=SC2086  # the list is meant to be split
$run env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
