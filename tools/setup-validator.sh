#!/bin/sh
# Installs Khronos' glTF validator for the tests in build/node, and node if it is missing.
set -eu
cd "$(dirname "$0")/.."
if ! command -v npm >/dev/null; then
    tools/setup.sh node
fi
[ -d build/node/node_modules/gltf-validator ] ||
    npm install --silent --no-audit --no-fund --prefix build/node gltf-validator@2.0.0-dev.3.10
