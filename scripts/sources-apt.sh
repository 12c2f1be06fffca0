# Sourced by the scripts that fetch from Debian's mirrors with sources lists of their
# own, so that the machine's apt configuration is left as it was.

# Writes to $1 a deb822 sources file of type $2 (deb or deb-src) made from the "deb"
# entries of the machine's own sources (one-line *.list and deb822 *.sources), each
# with its URIs, components and Signed-By. With further arguments, only the entries of
# those suites are kept; without, all of them.
sources_apt() {
  local sortie="$1" type="$2"
  shift 2
  local voulues="$*"
  local listes=() deb822=() f
  for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$f" ] && listes+=("$f")
  done
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && deb822+=("$f")
  done
  {
    if [ ${#listes[@]} -gt 0 ]; then
      awk -v voulues="$voulues" -v type="$type" '
        BEGIN { n = split(voulues, v, " "); for (i = 1; i <= n; i++) garder[v[i]] = 1; tout = n == 0 }
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
          if (m < 3 || !(tout || (mots[2] in garder))) next
          composants = mots[3]
          for (i = 4; i <= m; i++) composants = composants " " mots[i]
          print "Types: " type
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
      awk -v voulues="$voulues" -v type="$type" '
        BEGIN { n = split(voulues, v, " "); for (i = 1; i <= n; i++) garder[v[i]] = 1; tout = n == 0; vider() }
        function vider() { delete champ; signe = ""; courant = "" }
        function emettre(   n, s, i, gardees) {
          if (tolower(champ["enabled"]) ~ /^ *no *$/ || champ["types"] !~ /(^| )deb( |$)/ ||
              champ["uris"] == "") { vider(); return }
          n = split(champ["suites"], s, /[ \t]+/)
          gardees = ""
          for (i = 1; i <= n; i++) if (tout || (s[i] in garder)) gardees = gardees " " s[i]
          if (gardees != "") {
            print "Types: " type
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
  } >"$sortie"
}
