#!/usr/bin/env bash
# Builds sv140 with its tests and runs them all. First the Windows programs
# (scripts/windows.sh: their own tests under Wine, and the package); then the Linux
# build, configured with the Windows programs' folder so that one ctest runs the
# black-box tests twice: against sv140, and against sv140.exe under Wine (wine.*).
# Extra arguments go to the Linux build's configure step (e.g. -DSV140_SANITIZE=ON),
# whose folder is BUILD (build). WINDOWS=non leaves the Windows programs out.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD:-build}"
if [ "${WINDOWS:-oui}" = non ]; then
  scripts/dependances.sh
  win32=(-DSV140_WIN32_BIN=)
else
  scripts/windows.sh
  win32=(-DSV140_WIN32_BIN="$PWD/build-win32/bin")
  export WINEDEBUG="${WINEDEBUG:--all}"
fi
cmake -S . -B "$build" -DSV140_TESTS=ON "${win32[@]}" "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
