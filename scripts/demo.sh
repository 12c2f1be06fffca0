#!/usr/bin/env bash
# Builds sv140 and runs the demo: a simulated shop where a professional card and a
# Vitale card are read, a beneficiary is linked to a client, and a pair of glasses is
# invoiced, sent in a lot and, two simulated days later, paid on the host's slip.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependances.sh
cmake -S . -B build >/dev/null
cmake --build build -j"$(nproc)" --target sv140 WebQuintara2 sv140-shop >/dev/null
dossier="${1:-$(mktemp -d /tmp/sv140-demo.XXXXXX)}"
build/bin/sv140-shop demo "$dossier"
