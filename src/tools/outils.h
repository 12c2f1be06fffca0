// Shared services: the run log, the monthly archive of exchanges, file copy, the SQL
// date literal and run-and-wait.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace sv140 {

class Ui;

/// strftime on a date-time.
std::string Format_Date(const std::tm& t, const char* format);

/// Appends one line to LogsSV.txt in `dossier_programme`: the short date and the time
/// in print zones of 14 columns, then the message.
void Ecrire_Log(const std::string& dossier_programme, std::string_view message);
/// The line Ecrire_Log writes for `message` at time `t` (without the line end).
std::string Ligne_Log(const std::tm& t, std::string_view message);
/// Empties LogsSV.txt (created when missing).
void Vider_Log(const std::string& dossier_programme);

/// Clears what a run killed midway left behind: the scan pages and images written under
/// a provisional name in the program folder, and the partial copies there and, after a
/// killed run (`interrompue`), in this month's archive of exchanges.
void Nettoyer_Restes(const std::string& dossier_programme, std::string_view dossier_donnees,
                     bool interrompue);

/// Copies the request and the response files, when they exist, under
/// <data folder>/Sv140/YYYYMM/ as REQ_ and RSP_<operation>_<date>_<time>.xml, never over
/// an earlier exchange: a second one in the same second, of this run or of another
/// workstation, is _<date>_<time>_2.xml, and so on. A missing archive root is announced
/// on `ui`, then created. False when a file could not be copied.
bool Archiver_Echange(Ui& ui, std::string_view operation, std::string_view dossier_donnees,
                      const std::string& requete, const std::string& reponse);

/// Copies a file; refused when either path is 261 characters or longer. With
/// `ecraser` false, fails when the destination exists.
bool Copier_Fichier(const std::string& source, const std::string& destination, bool ecraser);

/// Starts a command line and waits for its end.
void Lancer_Et_Attendre(const std::string& ligne);

}  // namespace sv140
