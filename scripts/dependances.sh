#!/usr/bin/env bash
# Installs, from Debian's packages, everything sv140 needs to build, run its demo and
# run its tests: the Linux build's tools and libraries, the mingw-w64 cross compiler
# for the 32-bit Windows programs, and Wine with its 32-bit ODBC driver manager and
# SQLite driver, which run the Windows programs and their tests on this machine.
# Idempotent; run as root.
#
# Both sets go in together on purpose: a 32-bit library must be installed at exactly
# the version of its 64-bit twin, so the two must come from the same package lists.
# Installed apart, the Linux set could take a newer version from the security suite
# that the 32-bit side then cannot match.
set -euo pipefail

paquets=(
  cmake g++ make pkg-config
  libxml2-dev
  unixodbc-dev odbcinst libsqliteodbc sqlite3 libsqlite3-dev
  googletest libgtest-dev
  libsane-dev sane-utils
  imagemagick qpdf poppler-utils
  faketime
  g++-mingw-w64-i686
  wine wine32:i386
  libodbc2:i386 libsqliteodbc:i386
)

# Writes to $1 a deb822 sources file holding only the entries of the machine's own
# sources (one-line *.list and deb822 *.sources) whose suite is this release or its
# -updates, each with its URIs, components and Signed-By.
sources_sans_securite() {
  local codename
  codename="$(. /etc/os-release && echo "$VERSION_CODENAME")"
  local voulues="$codename $codename-updates"
  local listes=() deb822=() f
  for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$f" ] && listes+=("$f")
  done
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && deb822+=("$f")
  done
  {
    if [ ${#listes[@]} -gt 0 ]; then
      awk -v voulues="$voulues" '
        BEGIN { n = split(voulues, v, " "); for (i = 1; i <= n; i++) garder[v[i]] = 1 }
        { sub(/#.*/, "") }
        $1 != "deb" { next }
        {
          ligne = $0
          sub(/^[ \t]*deb[ \t]+/, "", ligne)
          signe = ""
          if (substr(ligne, 1, 1) == "[") {
            fin = index(ligne, "]")
            m = split(substr(ligne, 2, fin - 2), opts, /[ \t]+/)
            for (i = 1; i <= m; i++)
              if (tolower(opts[i]) ~ /^signed-by=/) signe = substr(opts[i], 11)
            ligne = substr(ligne, fin + 1)
          }
          gsub(/^[ \t]+|[ \t]+$/, "", ligne)
          m = split(ligne, mots, /[ \t]+/)
          if (m < 3 || !(mots[2] in garder)) next
          composants = mots[3]
          for (i = 4; i <= m; i++) composants = composants " " mots[i]
          print "Types: deb"
          print "URIs: " mots[1]
          print "Suites: " mots[2]
          print "Components: " composants
          if (signe != "") print "Signed-By: " signe
          print ""
        }' "${listes[@]}"
    fi
    if [ ${#deb822[@]} -gt 0 ]; then
      # One paragraph per source; a Signed-By may hold an embedded key on continuation
      # lines, which are copied as they are.
      awk -v voulues="$voulues" '
        BEGIN { n = split(voulues, v, " "); for (i = 1; i <= n; i++) garder[v[i]] = 1; vider() }
        function vider() { delete champ; signe = ""; courant = "" }
        function emettre(   n, s, i, gardees) {
          if (tolower(champ["enabled"]) ~ /^ *no *$/ || champ["types"] !~ /(^| )deb( |$)/ ||
              champ["uris"] == "") { vider(); return }
          n = split(champ["suites"], s, /[ \t]+/)
          gardees = ""
          for (i = 1; i <= n; i++) if (s[i] in garder) gardees = gardees " " s[i]
          if (gardees != "") {
            print "Types: deb"
            print "URIs: " champ["uris"]
            print "Suites:" gardees
            print "Components: " champ["components"]
            if (signe != "") print signe
            print ""
          }
          vider()
        }
        FNR == 1 { emettre() }
        /^#/ { next }
        /^[ \t]*$/ { emettre(); next }
        /^[ \t]/ {
          if (courant == "signed-by") signe = signe "\n" $0
          else { valeur = $0; gsub(/^[ \t]+|[ \t]+$/, "", valeur); champ[courant] = champ[courant] " " valeur }
          next
        }
        {
          deux = index($0, ":")
          courant = tolower(substr($0, 1, deux - 1))
          valeur = substr($0, deux + 1)
          gsub(/^[ \t]+|[ \t]+$/, "", valeur)
          champ[courant] = valeur
          if (courant == "signed-by") signe = "Signed-By:" (valeur == "" ? "" : " " valeur)
        }
        END { emettre() }' "${deb822[@]}"
    fi
  } >"$1"
}

installer() {
  export DEBIAN_FRONTEND=noninteractive
  if apt-get update -qq && apt-get install -y -qq --no-install-recommends "$@" >/dev/null; then
    return
  fi
  # A mirror caught mid-sync (typically the security suite's i386 index, whose size no
  # longer matches its Release file) makes apt refuse every install. Retry from this
  # release and its -updates alone, from the URIs the machine already trusts, with
  # package lists of our own so the machine's configuration is left as it was.
  echo "dependances.sh: apt failed; retrying from the release and -updates suites only" >&2
  local secours
  secours="$(mktemp -d /tmp/sv140-apt.XXXXXX)"
  # shellcheck disable=SC2064  # the folder is known now
  trap "rm -rf '$secours'" EXIT
  chmod 755 "$secours"
  mkdir -p "$secours/lists/partial"
  sources_sans_securite "$secours/secours.sources"
  if [ ! -s "$secours/secours.sources" ]; then
    echo "dependances.sh: no release or -updates suite in the machine's apt sources" >&2
    exit 1
  fi
  local options=(
    -o "Dir::Etc::SourceList=$secours/secours.sources"
    -o Dir::Etc::SourceParts=/nonexistent
    -o "Dir::State::Lists=$secours/lists"
  )
  apt-get "${options[@]}" update -qq
  # Never at the cost of what is installed: when a package already taken from the
  # security suite needs a 32-bit twin that only that suite has, stop here rather than
  # let apt remove it and everything that depends on it.
  if ! apt-get "${options[@]}" install -y -qq --no-install-recommends --no-remove "$@" >/dev/null; then
    echo "dependances.sh: cannot install ${*} without the security suite, whose index" \
      "failed to download; retry once 'apt-get update' succeeds" >&2
    exit 1
  fi
}

if ! dpkg --print-foreign-architectures | grep -qx i386; then
  dpkg --add-architecture i386
fi

manquants=()
for p in "${paquets[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || manquants+=("$p")
done
if [ ${#manquants[@]} -gt 0 ]; then
  installer "${manquants[@]}"
fi

# The SQLite ODBC driver must be known to the driver manager under its usual name. The
# entry names the library bare (libsqlite3odbc.so): the 64-bit and the 32-bit driver
# managers each look it up in their own architecture's odbc/ folder, so one entry serves
# the Linux programs and the Windows ones under Wine.
if ! odbcinst -q -d -n SQLite3 >/dev/null 2>&1; then
  odbcinst -i -d -f /usr/share/sqliteodbc/unixodbc.ini >/dev/null 2>&1 || true
fi
