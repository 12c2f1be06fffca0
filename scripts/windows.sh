#!/usr/bin/env bash
# Builds the 32-bit Windows programs in build-win32 (mingw-w64 cross build), runs their
# own tests under Wine, and makes the package build-win32/sv140-win32.zip. Extra
# arguments go to the configure step. Wine uses WINEPREFIX (its usual ~/.wine when
# unset), made here once before the tests start.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependances.sh
export WINEDEBUG="${WINEDEBUG:--all}"

build=build-win32
# TurboJPEG, cross-built once into the build folder.
scripts/libjpeg-turbo-win32.sh "$build"
# The toolchain is read on the first configure only; later ones keep it.
toolchain=()
[ -f "$build/CMakeCache.txt" ] || toolchain=(-DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-i686.cmake")
cmake -S . -B "$build" "${toolchain[@]}" "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"

# A first start makes the prefix, which takes a while; tests started in parallel on a
# prefix still being made would race for it.
if [ ! -f "${WINEPREFIX:-$HOME/.wine}/system.reg" ]; then
  wineboot --init >/dev/null 2>&1
  wineserver -w
fi

# The test tree's TWAIN source, under the one name Wine's source manager loads that
# Debian's Wine leaves unused (C:\windows\twain_32\sane.ds).
twain="${WINEPREFIX:-$HOME/.wine}/drive_c/windows/twain_32"
if [ -f "$build/bin/sv140test.ds" ]; then
  mkdir -p "$twain"
  cp "$build/bin/sv140test.ds" "$twain/sane.ds.$$"
  mv "$twain/sane.ds.$$" "$twain/sane.ds"
fi

if [ -f "$build/CTestTestfile.cmake" ]; then
  ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
else
  echo "windows.sh: $build has no tests configured" >&2
fi

cmake --build "$build" --target paquet
echo "Package: $PWD/$build/sv140-win32.zip"
