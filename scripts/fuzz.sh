#!/bin/bash
# Builds the fuzz targets with libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer
# (clang 14) in build-fuzz/, and runs each one from its seeds.
#
#   scripts/fuzz.sh              each target for 1 000 000 inputs (RUNS=... to change)
#   scripts/fuzz.sh ci           each target for a bounded time: about 3 minutes in all
#   scripts/fuzz.sh TARGET...    only those targets (either mode: scripts/fuzz.sh ci hote)
#
# Every crash, hang or leak found is kept under fuzz/regressions/<target>/ (replayed by
# the ctest fuzz.<target> of every build) and the script fails. It ends with a table:
# target, inputs run, seconds, crashes, hangs, leaks.
set -euo pipefail

racine=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_FUZZ:-$racine/build-fuzz}
cibles=(reponse hote access_sql ligne_commande encodage)

mode=complet
if [[ ${1:-} == ci ]]; then
  mode=ci
  shift
fi
if (($#)); then
  cibles=("$@")
fi
# The store targets run a whole operation on a shop per input: they get most of the time.
declare -A secondes_ci=([reponse]=70 [hote]=60 [access_sql]=15 [ligne_commande]=15 [encodage]=15)

"$racine/scripts/dependances.sh"
lanceur=()
if command -v ccache >/dev/null; then
  lanceur=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
mkdir -p "$build"
cmake -S "$racine" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 "${lanceur[@]}" \
  -DSV140_FUZZ=ON -DSV140_SANITIZE=ON -DSV140_TESTS=OFF >"$build/cmake.log" 2>&1 ||
  { cat "$build/cmake.log"; exit 1; }
cmake --build "$build" -j2 --target "${cibles[@]/#/fuzz_}"

# The store targets' shop is rewritten for each input: in memory when the machine has
# a memory file system (about 1.6 times the inputs per second).
if [[ -d /dev/shm && -w /dev/shm ]]; then
  export TMPDIR=/dev/shm
fi
# libFuzzer's own reports name what it found; -print_final_stats gives the inputs run.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
echec=0
lignes=()
for cible in "${cibles[@]}"; do
  travail=$build/fuzz-travail/$cible
  regressions=$racine/fuzz/regressions/$cible
  rm -rf "$travail"
  mkdir -p "$travail/corpus" "$travail/trouvailles" "$regressions"
  options=(-timeout=10 -rss_limit_mb=2048 -print_final_stats=1
    -dict="$racine/fuzz/dictionnaires/$cible.dict"
    -artifact_prefix="$travail/trouvailles/")
  if [[ $mode == ci ]]; then
    options+=(-max_total_time="${secondes_ci[$cible]}")
  else
    options+=(-runs="${RUNS:-1000000}")
  fi
  debut=$(date +%s)
  # The corpus grows in the work folder; the seeds of the tree stay as they are.
  set +e
  (cd "$travail" && "$build/bin/fuzz_$cible" "${options[@]}" -error_exitcode=77 \
    corpus "$racine/fuzz/corpus/$cible" >"$travail/sortie.txt" 2>&1)
  code=$?
  set -e
  duree=$(($(date +%s) - debut))
  executions=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$travail/sortie.txt" |
    grep -o '[0-9]*$' | tail -1)
  crashes=0 hangs=0 leaks=0
  for f in "$travail"/trouvailles/*; do
    [[ -e $f ]] || continue
    case $(basename "$f") in
      crash-*|oom-*) crashes=$((crashes + 1)) ;;
      timeout-*|slow-unit-*) hangs=$((hangs + 1)) ;;
      leak-*) leaks=$((leaks + 1)) ;;
      *) continue ;;
    esac
    cp "$f" "$regressions/"
  done
  if ((code != 0 || crashes + hangs + leaks > 0)); then
    echec=1
    echo "== fuzz_$cible : code $code, see $travail/sortie.txt" >&2
    tail -40 "$travail/sortie.txt" >&2
  fi
  lignes+=("$(printf '| %-15s | %10s | %6s | %7s | %5s | %5s |' "$cible" "${executions:-?}" \
    "$duree" "$crashes" "$hangs" "$leaks")")
done

printf '| %-15s | %10s | %6s | %7s | %5s | %5s |\n' target executions time_s crashes hangs leaks
printf '|%s|%s|%s|%s|%s|%s|\n' ----------------- ------------ -------- --------- ------- -------
printf '%s\n' "${lignes[@]}"
exit $echec
