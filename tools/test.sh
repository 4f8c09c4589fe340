#!/bin/sh
# Installs packages, builds, and runs all tests. The last lines and the exit status are those of ctest.
set -eu
cd "$(dirname "$0")/.."

tools/check-build.sh release
tools/setup.sh build test
cmake --preset release
cmake --build --preset release --parallel "$(nproc)"
exec ctest --preset release
