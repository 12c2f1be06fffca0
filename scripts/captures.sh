#!/usr/bin/env bash
# Pictures of the bridge's windows: sv140-fenetres.exe shows them one after the other
# under Wine, in French, on a virtual display of its own. Each window is waited for by
# its caption, checked for its buttons, saved as BUILD/captures/<name>.png, then worked
# from the keyboard or the mouse as an optician would: "Supprimer" of the claim form
# must delete its image, the nature chosen must come back as its code.
#
# Usage: scripts/captures.sh [BUILD]   (BUILD: the Windows build folder, build-win32)
# Fails (status 1) when a window does not open with its caption and buttons, draws
# nothing, or hands back the wrong thing; skipped (status 77) when the display tools or
# the French locale are missing (scripts/dependances.sh installs them).
set -euo pipefail
racine="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "${1:-$racine/build-win32}" && pwd)"
programme="$build/bin/sv140-fenetres.exe"
captures="$build/captures"

manque() {
  echo "captures.sh: $1 is missing, windows not pictured (scripts/dependances.sh installs it)" >&2
  exit 77
}
for outil in Xvfb xdotool import convert wine wineserver; do
  command -v "$outil" >/dev/null || manque "$outil"
done
locale -a | grep -qix 'fr_FR.utf-\?8' || manque "the fr_FR.UTF-8 locale"
[ -f "$programme" ] || { echo "captures.sh: $programme is not built" >&2; exit 1; }

travail="$(mktemp -d /tmp/sv140-captures.XXXXXX)"
xvfb=
nettoyer() {
  WINEPREFIX="$travail/prefix" wineserver -k 2>/dev/null || true
  if [ -n "$xvfb" ]; then kill "$xvfb" 2>/dev/null || true; fi
  rm -rf "$travail"
}
trap nettoyer EXIT

# A display of its own: Xvfb takes a free number and writes it on descriptor 3.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$travail/ecran" 2>"$travail/xvfb.log" &
xvfb=$!
for _ in $(seq 100); do [ -s "$travail/ecran" ] && break; sleep 0.1; done
if [ ! -s "$travail/ecran" ]; then
  echo "captures.sh: Xvfb did not start" >&2
  cat "$travail/xvfb.log" >&2
  exit 1
fi
DISPLAY=":$(head -1 "$travail/ecran")"
export DISPLAY

# Wine reads its language from the locale of its own processes. A throwaway prefix,
# without the browser and .NET installers a new prefix otherwise offers.
export WINEPREFIX="$travail/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
export LANG=fr_FR.UTF-8 LC_ALL=fr_FR.UTF-8
wineboot --init >/dev/null 2>&1
# No window manager runs on this display: Wine draws the captions and frames itself.
wine reg add 'HKCU\Software\Wine\X11 Driver' /v Decorated /d N /f >/dev/null 2>&1
# Wine's own fonts (Tahoma for the boxes, Marlett for the caption's buttons) are found
# only in the prefix's Fonts folder; the dialogs' Segoe UI, which every shop's Windows
# has, is drawn in Tahoma, of nearly the same size, rather than whatever font is near.
if [ -d /usr/share/wine/fonts ]; then
  cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
fi
wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes' \
  /v 'Segoe UI' /d Tahoma /f >/dev/null 2>&1
wineserver -w

# A program folder as a shop has one: spaces, and paths long enough to show.
dossier='C:\Program Files\Optique du Centre\Magasin principal\sv140'
mkdir -p "$WINEPREFIX/drive_c/Program Files/Optique du Centre/Magasin principal/sv140"
rm -rf "$captures"
mkdir -p "$captures"
sortie="$travail/sortie"
wine "$programme" "$dossier" >"$sortie" 2>"$travail/erreurs" &

echec() {
  echo "captures.sh: $1" >&2
  echo "--- what sv140-fenetres said:" >&2
  tr -d '\r' <"$sortie" >&2
  exit 1
}

# The program's lines already acted upon: each wait looks only after them.
lus=0
# Waits (20 s at most) for a line of the program equal to $1; moves past it.
attendre_ligne() {
  local n
  for _ in $(seq 200); do
    n="$(tail -n +"$((lus + 1))" "$sortie" | tr -d '\r' | grep -nxF -m1 -- "$1" | cut -d: -f1)" || true
    if [ -n "$n" ]; then
      lus=$((lus + n))
      return
    fi
    sleep 0.1
  done
  echec "no \"$1\" within 20 s"
}

# Waits for the window captioned $1 and reads its description into $controles (one
# control per line, keyboard accelerators removed) and its X window into $id.
fenetre=
controles=
id=
attendre_fenetre() {
  fenetre="$1"
  attendre_ligne "fenetre \"$fenetre\""
  local debut=$lus
  attendre_ligne fin
  controles="$(sed -n "$((debut + 1)),$((lus - 1))p" "$sortie" | tr -d '\r&')"
  id="$(timeout 10 xdotool search --sync --onlyvisible --name "^$fenetre\$" | head -1)" ||
    echec "window \"$fenetre\" described but not on the display"
}

# Checks that the window has each button given, enabled.
boutons() {
  local b
  for b in "$@"; do
    grep -q "^Button \"$b\" actif " <<<"$controles" ||
      echec "window \"$fenetre\" has no enabled button \"$b\":"$'\n'"$controles"
  done
}

# The number of enabled buttons captioned $1.
compter() { grep -c "^Button \"$1\" actif " <<<"$controles" || true; }

# Saves the window as $1.png and checks that it drew something under its caption: a
# body of one or two colours is a window whose controls did not draw.
photo() {
  local png="$captures/$1.png"
  sleep 0.5
  import -window "$id" "$png" 2>/dev/null || echec "cannot picture \"$fenetre\""
  local couleurs
  couleurs="$(convert "$png" -gravity North -chop 0x24 -format '%k' info:)"
  [ "$couleurs" -ge 8 ] || echec "$png is blank ($couleurs colours under the caption)"
}

# Sends keys to the window, which has the keyboard once focused (no window manager).
touches() {
  xdotool windowfocus --sync "$id" 2>/dev/null || true
  xdotool key --clearmodifiers "$@"
}

# Clicks the $2-th (from 1) control whose description starts with $1.
cliquer() {
  local position
  position="$(grep "^$1 " <<<"$controles" | sed -n "$2p" | awk '{print $(NF-1), $NF}')"
  [ -n "$position" ] || echec "window \"$fenetre\" has no control $1 number $2"
  # shellcheck disable=SC2086  # x and y
  xdotool mousemove $position click 1
}

# The question of a scan: the system's own buttons, in French. Escape cancels.
attendre_fenetre "SCOR Ordonnance"
boutons Oui Non Annuler
photo question_scan
touches Escape
attendre_ligne "reponse Annuler"

for titre in "Taille incorrecte" "Reponse"; do
  attendre_fenetre "$titre"
  boutons OK
  photo "$(tr ' A-Z' '_a-z' <<<"$titre")"
  touches Return
done

# The review of a session: a path in each scanned kind's box, a collected paper for
# the other attachment. "Supprimer" of the claim form deletes its image and clears its
# row; Escape then closes the window like "Enregistrer".
attendre_fenetre "visualisation des Documents"
boutons Ouvrir Supprimer Enregistrer
if [ "$(compter Ouvrir)" != 3 ] || [ "$(compter Supprimer)" != 3 ]; then
  echec "three rows of Ouvrir/Supprimer expected:"$'\n'"$controles"
fi
grep -qF "Edit \"$dossier\\Ordo_SCOR.jpg\"" <<<"$controles" ||
  echec "the prescription's box does not show its path:"$'\n'"$controles"
photo documents_scor
cliquer 'Button "Supprimer"' 2
attendre_ligne "agir 4"
attendre_fenetre "visualisation des Documents"
if [ "$(compter Supprimer)" != 2 ] || ! grep -q '^Button "Supprimer" inactif ' <<<"$controles"; then
  echec "the deleted claim form's row is still active:"$'\n'"$controles"
fi
photo documents_scor_apres_suppression
touches Escape
attendre_ligne "image Ordo_SCOR.jpg presente"
attendre_ligne "image Cerfa_SCOR.jpg absente"

attendre_fenetre "Scannerisation Ordonnance"
boutons Ouvrir Supprimer Enregistrer
photo document_ordo2
touches Return

# The chooser: the list opened, then the sixth nature chosen from the keyboard.
attendre_fenetre "Autre PJ"
boutons Enregistrer
grep -q '^ComboBox "22 entrées, choix -1" actif ' <<<"$controles" ||
  echec "the nature list does not hold 22 entries, none chosen:"$'\n'"$controles"
photo autre_pj
touches F4
sleep 0.5
# The open list is a window of its own: the picture is the screen cut to what is drawn.
import -window root "$captures/autre_pj_liste.png"
convert "$captures/autre_pj_liste.png" -trim +repage "$captures/autre_pj_liste.png"
touches F4 Down Down Down Down Down Down Return
attendre_ligne "AutrePJ DPOD"

# Closed without a choice: no nature.
attendre_fenetre "Autre PJ"
touches Escape
attendre_ligne "AutrePJ aucune"
attendre_ligne "termine"
echo "captures.sh: every window opened and answered; pictures in $captures"
