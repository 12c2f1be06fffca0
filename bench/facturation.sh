#!/usr/bin/env bash
# Whole-run timings of the invoicing operations on shops seeded with N waiting invoices
# (sv140-semer): f_EnvoyerToutesFactures sends them all, then, two simulated days later,
# f_LireInfosRetourFacture reads their returns. Beside each, the floor: the same
# statements run by the sqlite3 shell on a copy of the same database, in WAL mode with
# synchronous=NORMAL and one commit per invoice (sv140-plancher-sql). Each run starts
# from a copy of the seeded shop; times are medians, the peak memory the largest
# maximum resident set size (/usr/bin/time) of the bridge's runs. The simulated
# middleware runs inside the bridge's process: its call is also measured alone
# (sv140-appel), so that its share of the time and memory shows.
#   bench/facturation.sh [RUNS [N...]]      (3 runs, N = 1000 10000 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
runs="${1:-3}"
shift || true
tailles=("$@")
[ ${#tailles[@]} -gt 0 ] || tailles=(1000 10000)
scripts/dependances.sh
if [ ! -x /usr/bin/time ]; then
  echo "facturation.sh : /usr/bin/time manque (paquet Debian time)" >&2
  exit 1
fi
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DSV140_TESTS=OFF -DSV140_BENCH=ON >/dev/null
cmake --build build-bench -j"$(nproc)" >/dev/null
bin="$PWD/build-bench/bin"

racine=$(mktemp -d /tmp/sv140-facturation.XXXXXX)
trap 'rm -rf "$racine"' EXIT
charge() { cut -d' ' -f1-3 /proc/loadavg; }
echo "load average before: $(charge)"

# mesurer OUT command... : runs it once; OUT gets "milliseconds peak-kilobytes".
mesurer() {
  local sortie=$1 debut fin
  shift
  debut=$(date +%s%N)
  /usr/bin/time -f %M -o "$racine/rss" "$@" </dev/null >/dev/null 2>"$racine/stderr" ||
    { cat "$racine/stderr" >&2; return 1; }
  fin=$(date +%s%N)
  echo "$(( (fin - debut) / 1000000 )) $(tail -1 "$racine/rss")" >>"$sortie"
}
mediane() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
maximum() { sort -n | tail -1; }

# The answer the host reads must be a success: a failed run measures nothing.
reussi() {
  grep -q '<codeErreur>0</codeErreur>' "$1/Belvane_Classic/SV140/ZEMO_Response.xml" || {
    echo "facturation.sh : échec de $2 :" >&2
    head -c 600 "$1/Belvane_Classic/SV140/ZEMO_Response.xml" >&2
    exit 1
  }
}

# The rows a run leaves, for the bridge and the floor to be compared; the internal lot
# is the time of the run, only its form is compared.
etat_lots() {
  sqlite3 "$1" "SELECT Info_Bordereau_ID, Info_Bordereau_numFacture, Info_Adresse_ID_FK,
    length(Info_Bordereau_ID_lotInterne), Info_Bordereau_Regroupement,
    Info_Bordereau_LibelRegroupement, Info_Bordereau_NumLot_FSE, Info_Bordereau_NumLot_DRE
    FROM T_InfosBordereaux ORDER BY 1; SELECT * FROM T_InfosAdresse ORDER BY 1;
    SELECT Info_Facture_ID, Info_Facture_Nlot FROM T_InfosFacture ORDER BY 1;"
}
etat_retours() {
  sqlite3 "$1" "SELECT * FROM [Bordereau Mutuelle] ORDER BY NumFicheCommande;"
}
memes_lignes() {  # what, bridge's state, floor's state
  if ! cmp -s "$2" "$3"; then
    echo "facturation.sh : $1 : le plancher n'écrit pas ce qu'écrit le pont :" >&2
    diff "$2" "$3" | head -20 >&2
    exit 1
  fi
}

lignes=() simules=()
declare -A temps sols pics
for n in "${tailles[@]}"; do
  d="$racine/$n"
  mkdir -p "$d"
  "$bin/sv140-shop" init "$d/modele" >/dev/null
  "$bin/sv140-semer" "$d/modele" "$n" >/dev/null
  mkdir -p "$d/modele/Belvane_Classic/_Magasin/Sv140"  # the archive of a shop in service
  tampon=$(sqlite3 "$d/modele/Belvane_Classic/_Magasin/SV140.accdb" \
    "SELECT Taille_Buffer FROM T_InfoParam WHERE Info_Param_ID = 1")

  for phase in lots retours; do
    if [ "$phase" = lots ]; then
      operation=f_EnvoyerToutesFactures base=SV140.accdb modele="$d/modele"
    else
      operation=f_LireInfosRetourFacture base=Donnees_32.accdb modele="$d/modele-retours"
    fi
    for r in $(seq "$runs"); do
      rm -rf "$d/run" && cp -a "$modele" "$d/run"
      shop="$d/run/Belvane_Classic/_Magasin"
      prog="$d/run/Belvane_Classic/SV140"
      mesurer "$d/$phase.pont" "$prog/sv140" "$operation" "$shop"
      reussi "$d/run" "$operation ($n factures)"
      rm -rf "$d/zrsim" && cp -a "$modele/Belvane_Classic/SV140/zrsim" "$d/zrsim"
      mesurer "$d/$phase.sim" "$bin/sv140-appel" "$d/zrsim" "$prog/ZEMO_SvRequest.xml" "$tampon"

      plancher="$d/plancher.accdb"
      rm -f "$plancher"*
      cp "$modele/Belvane_Classic/_Magasin/$base" "$plancher"
      if [ "$r" = 1 ]; then  # the script, from the copy before the floor runs on it
        "$bin/sv140-plancher-sql" "$phase" "$prog/ZEMO_SvResponse.xml" "$plancher" >"$d/$phase.sql"
      fi
      mesurer "$d/$phase.plancher" sqlite3 -bail "$plancher" ".read $d/$phase.sql"
      if [ "$r" = 1 ]; then
        "etat_$phase" "$shop/$base" >"$d/etat.pont"
        "etat_$phase" "$plancher" >"$d/etat.plancher"
        memes_lignes "$operation ($n factures)" "$d/etat.pont" "$d/etat.plancher"
        wc -c <"$prog/ZEMO_SvResponse.xml" >"$d/$phase.octets"
      fi
      if [ "$phase" = lots ] && [ "$r" = 1 ]; then
        # The returns start from this shop, two simulated days after the sending, with
        # the period the host writes from data version 3500.
        rm -rf "$d/modele-retours" && cp -a "$d/run" "$d/modele-retours"
        "$bin/sv140-shop" avancer "$d/modele-retours" 2 >/dev/null
        printf '<?xml version="1.0" encoding="ISO-8859-1"?>\r\n<ZRMESSAGE><donnees><datedebut>%s</datedebut><datedfin>%s</datedfin></donnees></ZRMESSAGE>\r\n' \
          "$(date -d '-90 days' +%Y%m%d)" "$(date +%Y%m%d)" \
          >"$d/modele-retours/Belvane_Classic/SV140/ZEMO_Request.xml"
      fi
    done
    pont=$(cut -d' ' -f1 "$d/$phase.pont" | mediane)
    sol=$(cut -d' ' -f1 "$d/$phase.plancher" | mediane)
    pic=$(cut -d' ' -f2 "$d/$phase.pont" | maximum)
    sim=$(cut -d' ' -f1 "$d/$phase.sim" | mediane)
    pic_sim=$(cut -d' ' -f2 "$d/$phase.sim" | maximum)
    lignes+=("$(awk -v o="$operation" -v n="$n" -v p="$pont" -v s="$sol" -v m="$pic" \
      'BEGIN { printf "| %s | %d | %d | %d | %.1f | %.1f |", o, n, p, s, p / (s > 0 ? s : 1), m / 1024 }')")
    simules+=("$(awk -v o="$operation" -v n="$n" -v t="$tampon" -v a="$(cat "$d/$phase.octets")" \
      -v p="$sim" -v m="$pic_sim" \
      'BEGIN { printf "| %s | %d | %d | %d | %d | %.1f |", o, n, t / 1024, a / 1024, p, m / 1024 }')")
    temps["$operation $n"]=$pont
    sols["$operation $n"]=$sol
    pics["$operation $n"]=$pic
  done
  rm -rf "$d"
done

echo "load average after: $(charge)"
echo
echo "median of $runs runs; T_InfoParam.Taille_Buffer holds the whole answer (no code 271)"
echo
echo "| operation | N | bridge ms | floor ms | ratio | peak MB |"
echo "|---|---:|---:|---:|---:|---:|"
printf '%s\n' "${lignes[@]}"
echo
echo "The simulated middleware's call alone (inside the bridge's figures above):"
echo
echo "| operation | N | buffer KB | answer KB | simulator ms | simulator peak MB |"
echo "|---|---:|---:|---:|---:|---:|"
printf '%s\n' "${simules[@]}"

# The goals: 10 000 invoices under a second, a flat cost per invoice (the largest run
# within 12 times ten times fewer), within 3 times the floor, under 64 MB.
echo
for operation in f_EnvoyerToutesFactures f_LireInfosRetourFacture; do
  for n in "${tailles[@]}"; do
    cle="$operation $n"
    petit="$operation $(( n / 10 ))"
    awk -v c="$cle" -v t="${temps[$cle]}" -v s="${sols[$cle]}" -v m="${pics[$cle]}" \
      -v p="${temps[$petit]:-}" 'BEGIN {
        v = ""
        if (c ~ / 10000$/) v = v sprintf(" %s under 1 s;", t < 1000 ? "ok" : "MISSED")
        if (p != "") v = v sprintf(" %s flat (%.1fx the run of N/10);", t <= 12 * p ? "ok" : "MISSED", t / p)
        v = v sprintf(" %s within 3x the floor;", t <= 3 * s ? "ok" : "MISSED")
        v = v sprintf(" %s under 64 MB", m < 64 * 1024 ? "ok" : "MISSED")
        print c ":" v
      }'
  done
done
