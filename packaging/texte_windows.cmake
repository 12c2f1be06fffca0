# cmake -DENTREE=in.txt -DSORTIE=out.txt -P texte_windows.cmake
# Writes a UTF-8 text as Notepad reads it without guessing: byte-order mark first and
# CR LF line ends.
file(READ "${ENTREE}" texte)
string(REPLACE "\r\n" "\n" texte "${texte}")
string(REPLACE "\n" "\r\n" texte "${texte}")
string(ASCII 239 187 191 bom)
file(WRITE "${SORTIE}" "${bom}${texte}")
