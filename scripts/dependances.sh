#!/usr/bin/env bash
# Installs, from Debian's packages, everything sv140 needs to build, run its demo and
# run its tests. Idempotent; run as root.
set -euo pipefail
paquets=(
  cmake g++ make pkg-config
  libxml2-dev
  unixodbc-dev odbcinst libsqliteodbc sqlite3 libsqlite3-dev
  googletest libgtest-dev
  faketime
)
manquants=()
for p in "${paquets[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || manquants+=("$p")
done
if [ ${#manquants[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${manquants[@]}" >/dev/null
fi
# The SQLite ODBC driver must be known to the driver manager under its usual name.
if ! odbcinst -q -d -n SQLite3 >/dev/null 2>&1; then
  odbcinst -i -d -f /usr/share/sqliteodbc/unixodbc.ini >/dev/null 2>&1 || true
fi
