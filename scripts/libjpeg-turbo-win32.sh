#!/usr/bin/env bash
# Cross-builds the static TurboJPEG library that the Windows programs link, from
# Debian's own libjpeg-turbo source package, into $1/libjpeg-turbo (default
# build-win32): lib/libturbojpeg.a and include/turbojpeg.h under its "prefixe" folder,
# where the Windows configure finds them. Kept once built: a second run does nothing.
#
# The source comes from the mirrors the machine already uses (its "deb" entries made
# "deb-src"), through a sources list and package lists of our own, so the machine's
# apt configuration and caches are left as they were. Needs apt and dpkg-dev
# (scripts/dependances.sh installs them).
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/sources-apt.sh

dossier="$PWD/${1:-build-win32}/libjpeg-turbo"
prefixe="$dossier/prefixe"
if [ -f "$prefixe/lib/libturbojpeg.a" ] && [ -f "$prefixe/include/turbojpeg.h" ]; then
  exit 0
fi

rm -rf "$dossier"
mkdir -p "$dossier/apt/lists/partial" "$dossier/paquet"
sources_apt "$dossier/apt/miroirs.sources" deb-src
if [ ! -s "$dossier/apt/miroirs.sources" ]; then
  echo "libjpeg-turbo-win32.sh: no deb entry in the machine's apt sources" >&2
  exit 1
fi
options=(
  -o "Dir::Etc::SourceList=$dossier/apt/miroirs.sources"
  -o Dir::Etc::SourceParts=/nonexistent
  -o "Dir::State::Lists=$dossier/apt/lists"
  -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
  # The build folder may be out of reach of apt's unprivileged user: download as
  # this user, which apt would otherwise fall back to with a warning.
  -o APT::Sandbox::User="$(id -un)"
)
apt-get "${options[@]}" update -qq
(cd "$dossier/paquet" && apt-get "${options[@]}" source -qq libjpeg-turbo >/dev/null)
source=("$dossier"/paquet/libjpeg-turbo-*/)
[ -f "${source[0]}/turbojpeg.h" ] || {
  echo "libjpeg-turbo-win32.sh: the source package did not unpack" >&2
  exit 1
}

# No SIMD: its assembly needs nasm, and the scanned pages are small enough without.
cmake -S "${source[0]}" -B "$dossier/construction" \
  -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-i686.cmake" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_PREFIX="$prefixe" \
  -DWITH_SIMD=0 -DENABLE_SHARED=0 -DENABLE_STATIC=1 -DWITH_TURBOJPEG=1 >/dev/null
cmake --build "$dossier/construction" -j2 --target turbojpeg-static >/dev/null
mkdir -p "$prefixe/lib" "$prefixe/include"
cp "$dossier/construction/libturbojpeg.a" "$prefixe/lib/"
cp "${source[0]}/turbojpeg.h" "$prefixe/include/"
