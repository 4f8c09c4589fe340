#!/bin/sh
# Installs packages, builds, and runs all tests. The last lines and the exit status are those of ctest.
set -eu
cd "$(dirname "$0")/.."

tools/setup.sh build test --for release
cmake --preset release
cmake --build --preset release --parallel "$(nproc)"
exec ctest --preset release
