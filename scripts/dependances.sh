#!/usr/bin/env bash
# Installs, from Debian's packages, everything sv140 needs to build, run its demo,
# run its tests and fuzz it: the Linux build's tools and libraries, the mingw-w64 cross compiler
# for the 32-bit Windows programs, and Wine with its 32-bit ODBC driver manager and
# SQLite driver, which run the Windows programs and their tests on this machine, with
# Wine's own fonts and a virtual display on which the tests picture its windows.
# Idempotent; run as root.
#
# Both sets go in together on purpose: a 32-bit library must be installed at exactly
# the version of its 64-bit twin, so the two must come from the same package lists.
# Installed apart, the Linux set could take a newer version from the security suite
# that the 32-bit side then cannot match.
set -euo pipefail
. "$(dirname "$0")/sources-apt.sh"

paquets=(
  cmake g++ make pkg-config
  libxml2-dev
  unixodbc-dev odbcinst libsqliteodbc sqlite3 libsqlite3-dev
  googletest libgtest-dev
  libsane-dev sane-utils
  imagemagick qpdf poppler-utils
  faketime
  clang-14 libclang-rt-14-dev time
  libturbojpeg0-dev
  g++-mingw-w64-i686 dpkg-dev
  wine wine32:i386
  libodbc2:i386 libsqliteodbc:i386
  fonts-wine
  xvfb xdotool imagemagick locales
)

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
  local codename
  codename="$(. /etc/os-release && echo "$VERSION_CODENAME")"
  sources_apt "$secours/secours.sources" deb "$codename" "$codename-updates"
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

# The window pictures (scripts/captures.sh) run Wine in French, as the shops do, so
# that the message boxes' own buttons read Oui/Non/Annuler: the locale must exist.
if ! locale -a 2>/dev/null | grep -qix 'fr_FR.utf-\?8'; then
  sed -i 's/^# *\(fr_FR.UTF-8 UTF-8\)/\1/' /etc/locale.gen
  locale-gen --keep-existing >/dev/null
fi

# The SQLite ODBC driver must be known to the driver manager under its usual name. The
# entry names the library bare (libsqlite3odbc.so): the 64-bit and the 32-bit driver
# managers each look it up in their own architecture's odbc/ folder, so one entry serves
# the Linux programs and the Windows ones under Wine.
if ! odbcinst -q -d -n SQLite3 >/dev/null 2>&1; then
  odbcinst -i -d -f /usr/share/sqliteodbc/unixodbc.ini >/dev/null 2>&1 || true
fi
