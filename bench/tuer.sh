#!/usr/bin/env bash
# Kills every operation that writes, 200 times each by default, at random points of its
# run (the black-box table Tuer*, with more kills), and prints per operation: kills,
# kills that landed inside the writes, kills after which a check failed, and the
# provisional files the killed runs left (which the next run must clear).
#   bench/tuer.sh [KILLS]
set -euo pipefail
cd "$(dirname "$0")/.."
kills="${1:-200}"
scripts/dependances.sh
[ -f build/CMakeCache.txt ] || cmake -S . -B build -DSV140_TESTS=ON >/dev/null
cmake --build build -j2 --target sv140_blackbox_tests >/dev/null
journal=$(mktemp /tmp/sv140-tuer.XXXXXX)
trap 'rm -f "$journal"' EXIT
statut=0
SV140_TUER_ESSAIS="$kills" build/bin/sv140_blackbox_tests --gtest_filter='Tuer*' \
  >"$journal" 2>&1 || statut=$?
printf '%-28s %6s %7s %9s %10s\n' operation kills inside failures leftovers
awk '/^tuer / { printf "%-28s %6s %7s %9s %10s\n", $2, $4, $6, $8, $11 }' "$journal"
if [ "$statut" -ne 0 ]; then
  echo "tuer.sh : some checks failed:" >&2
  awk '/Failure$/ { n = 7 } n-- > 0' "$journal" | sed -n 1,80p >&2
fi
exit "$statut"
