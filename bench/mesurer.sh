#!/usr/bin/env bash
# Whole-run timings on the demo shop: the median of N runs of f_LireVersion and of the
# card link (f_LireCVitale then f_MettreAJourIdEtc), beside the floor program that only
# opens the three databases and writes one file.
#   bench/mesurer.sh [N]      (N = 21 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
n="${1:-21}"
scripts/dependances.sh
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DSV140_TESTS=OFF -DSV140_BENCH=ON >/dev/null
cmake --build build-bench -j"$(nproc)" >/dev/null

racine=$(mktemp -d /tmp/sv140-bench.XXXXXX)
trap 'rm -rf "$racine"' EXIT
build-bench/bin/sv140-shop init "$racine" >/dev/null
build-bench/bin/sv140-shop carte "$racine" famille >/dev/null
prog="$racine/Belvane_Classic/SV140"
shop="$racine/Belvane_Classic/_Magasin"
cp build-bench/bin/sv140-plancher "$prog/"

# The host's choice of a client, so that the link finds its beneficiary.
"$prog/sv140" f_LireCVitale "$shop" </dev/null 2>/dev/null
sqlite3 "$shop/Donnees_32.accdb" <<SQL
DELETE FROM T_Etat_Civil;
INSERT INTO T_Etat_Civil ([N°], [Sécurité sociale], [Date Naissance], RangNaissance)
SELECT 1, Fournisseur, substr(Rubrique1,1,4)||'-'||substr(Rubrique1,5,2)||'-'||substr(Rubrique1,7,2)||' 00:00:00', [Plage-Mini]
FROM [Sélection Verres] LIMIT 1;
SQL

mediane() {  # command... -> median wall time in milliseconds over n runs
  local t=()
  for _ in $(seq "$n"); do
    local debut fin
    debut=$(date +%s%N)
    "$@" </dev/null >/dev/null 2>&1
    fin=$(date +%s%N)
    t+=($(( (fin - debut) / 1000 )))
  done
  printf '%s\n' "${t[@]}" | sort -n | awk -v n="$n" 'NR == int((n + 1) / 2) { printf "%.1f", $1 / 1000 }'
}
lien() { "$prog/sv140" f_LireCVitale "$shop" && "$prog/sv140" f_MettreAJourIdEtc "$shop"; }

printf '%-42s %10s\n' "median of $n runs" "ms"
printf '%-42s %10s\n' "floor (open 3 databases, write 1 file)" "$(mediane "$prog/sv140-plancher" f_LireVersion "$shop")"
printf '%-42s %10s\n' "f_LireVersion" "$(mediane "$prog/sv140" f_LireVersion "$shop")"
printf '%-42s %10s\n' "f_LireCVitale + f_MettreAJourIdEtc" "$(mediane lien)"

# The Windows bridge under Wine on the same shop, when the Windows build is there
# (scripts/windows.sh): the cost of the emulator shows beside the Linux figures.
if [ -f build-win32/bin/sv140.exe ] && command -v wine >/dev/null; then
  cp build-win32/bin/sv140.exe build-win32/bin/WebQuintara2.dll "$prog/"
  export WINEDEBUG=-all LANG=C.UTF-8 SV140_UI=console
  wineserver -p60 2>/dev/null || true
  shop_w="Z:${shop//\//\\}"
  lien_w() { wine "$prog/sv140.exe" f_LireCVitale "$shop_w" && wine "$prog/sv140.exe" f_MettreAJourIdEtc "$shop_w"; }
  wine "$prog/sv140.exe" f_LireVersion "$shop_w" </dev/null >/dev/null 2>&1 || true
  printf '%-42s %10s\n' "sv140.exe under Wine: f_LireVersion" "$(mediane wine "$prog/sv140.exe" f_LireVersion "$shop_w")"
  printf '%-42s %10s\n' "sv140.exe under Wine: card link" "$(mediane lien_w)"
fi
