#!/bin/sh
# Measures the tests' coverage of src/: tools/coverage.sh
# Exits with 1 below 97 % of lines or 92 % of branches.
# Lines that no test can reach are marked GCOVR_EXCL_LINE.
set -eu
cd "$(dirname "$0")/.."
tools/setup.sh build test coverage
cmake --preset coverage
cmake --build --preset coverage --parallel "$(nproc)"
ctest --preset coverage -j "$(nproc)"
gcovr --root . --filter src/ --exclude-throw-branches --exclude-unreachable-branches --print-summary \
    --fail-under-line 97 --fail-under-branch 92 build/coverage/src
