#!/usr/bin/env bash
# Whole-run timings on a shop made by sv140-shop: the median wall time of N runs of each
# operation and the largest peak memory (maximum resident set size) of its runs, beside
# the floor program that only opens the three databases and writes one file; then the
# same runs of sv140.exe under Wine when build-win32 has been built.
#   bench/mesurer.sh [N]      (N = 21 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
n="${1:-21}"
scripts/dependances.sh
if [ ! -x /usr/bin/time ]; then
  echo "mesurer.sh : /usr/bin/time manque (paquet Debian time)" >&2
  exit 1
fi
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DSV140_TESTS=OFF -DSV140_BENCH=ON >/dev/null
cmake --build build-bench -j"$(nproc)" >/dev/null

racine=$(mktemp -d /tmp/sv140-bench.XXXXXX)
trap 'rm -rf "$racine"' EXIT
build-bench/bin/sv140-shop init "$racine" >/dev/null
build-bench/bin/sv140-shop carte "$racine" famille >/dev/null
prog="$racine/Belvane_Classic/SV140"
shop="$racine/Belvane_Classic/_Magasin"
cp build-bench/bin/sv140-plancher "$prog/"

# The professional card, then the host's choice of a client, so that the link finds its
# beneficiary.
"$prog/sv140" f_LireCPS "$shop" </dev/null >/dev/null 2>&1
"$prog/sv140" f_LireCVitale "$shop" </dev/null >/dev/null 2>&1
sqlite3 "$shop/Donnees_32.accdb" <<SQL
DELETE FROM T_Etat_Civil;
INSERT INTO T_Etat_Civil ([N°], [Sécurité sociale], [Date Naissance], RangNaissance)
SELECT 1, Fournisseur, substr(Rubrique1,1,4)||'-'||substr(Rubrique1,5,2)||'-'||substr(Rubrique1,7,2)||' 00:00:00', [Plage-Mini]
FROM [Sélection Verres] LIMIT 1;
SQL
"$prog/sv140" f_MettreAJourIdEtc "$shop" </dev/null >/dev/null 2>&1

# mesurer LABEL command... : N runs; prints the label, the median milliseconds and the
# largest peak memory in MB, and the answer's code of the last run. Each run of
# f_CreerFacture creates one more invoice.
mesurer() {
  local libelle=$1 t=() m=0
  shift
  for _ in $(seq "$n"); do
    local debut fin
    debut=$(date +%s%N)
    /usr/bin/time -f %M -o "$racine/rss" "$@" </dev/null >/dev/null 2>&1 || true
    fin=$(date +%s%N)
    t+=($(( (fin - debut) / 1000 )))
    local k
    k=$(tail -1 "$racine/rss")
    [ "$k" -gt "$m" ] && m=$k
  done
  printf '%-48s %9s %9s %5s\n' "$libelle" \
    "$(printf '%s\n' "${t[@]}" | sort -n | awk -v n="$n" 'NR == int((n + 1) / 2) { printf "%.1f", $1 / 1000 }')" \
    "$(awk -v k="$m" 'BEGIN { printf "%.1f", k / 1024 }')" \
    "$(grep -o '<codeErreur>[^<]*' "$prog/ZEMO_Response.xml" | cut -d'>' -f2 || true)"
}
operations=(f_LireVersion f_LireCPS f_LireCVitale f_MettreAJourIdEtc f_ListerFactures
  f_CreerFacture f_EnvoyerToutesFactures f_LireInfosRetourFacture f_ControlePJ)
facture() { build-bench/bin/sv140-shop facture "$racine" famille >/dev/null; }

echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
printf '%-48s %9s %9s %5s\n' "median of $n runs" "ms" "peak MB" "code"
mesurer "floor (open 3 databases, write 1 file)" "$prog/sv140-plancher" f_LireVersion "$shop"
for op in "${operations[@]}"; do
  [ "$op" = f_CreerFacture ] && facture
  mesurer "$op" "$prog/sv140" "$op" "$shop"
done

# The Windows bridge under Wine on the same shop, when the Windows build is there
# (scripts/windows.sh): the cost of the emulator shows beside the Linux figures.
if [ -f build-win32/bin/sv140.exe ] && command -v wine >/dev/null; then
  cp build-win32/bin/sv140.exe build-win32/bin/WebQuintara2.dll "$prog/"
  export WINEDEBUG=-all LANG=C.UTF-8 SV140_UI=console
  wineserver -p60 2>/dev/null || true
  shop_w="Z:${shop//\//\\}"
  wine "$prog/sv140.exe" f_LireVersion "$shop_w" </dev/null >/dev/null 2>&1 || true
  for op in "${operations[@]}"; do
    [ "$op" = f_CreerFacture ] && facture
    mesurer "sv140.exe under Wine: $op" wine "$prog/sv140.exe" "$op" "$shop_w"
  done
fi
