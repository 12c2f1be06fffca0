#!/usr/bin/env bash
# Builds sv140 with its tests and runs them all. Extra arguments go to cmake's
# configure step (e.g. -DSV140_SANITIZE=ON), and the build folder is BUILD (build).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependances.sh
build="${BUILD:-build}"
cmake -S . -B "$build" -DSV140_TESTS=ON "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
