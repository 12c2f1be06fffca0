// The values of one run of the bridge, created by the entry point and passed to every
// routine. One run performs one operation.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "data/connexions.h"
#include "platform/image.h"
#include "platform/scanner.h"
#include "platform/systeme.h"
#include "platform/ui.h"

namespace sv140 {

struct Run {
    std::string dossier_programme;  // holds the executable and the exchange files
    std::string Chaine_Command;     // the whole command-line text
    std::string F_Appel;            // the operation name
    std::string Chemin;             // the shop's data folder
    std::string troisieme_mot;      // whatever follows the data folder
    std::string DB_DONNEES;         // host database
    std::string DB_sv;              // bridge database
    std::string DB_temporaire;      // temporary database
    std::string frontal;            // host front-end path (kept, read by nobody)
    bool Retour_Reponse = false;
    /// Set when the run must end at once, before the archive and the copy of the answer
    /// for the host (the request file vanished under the bridge): why.
    std::optional<std::string> interruption;
    /// The size of the last answer buffer given to the middleware: an answer that did
    /// not fit, and whose error text does not say how large it is, gets a larger one.
    long tampon = 0;
    /// The exchange files as they stand are in the archive: the end of the run does not
    /// copy them a second time. Any write to either file clears it.
    bool echange_archive = false;
    /// The run before this one in the program folder was killed before its end.
    bool precedente_interrompue = false;

    std::unique_ptr<Ui> ui;
    std::unique_ptr<Connexions> cnx;
    /// The middleware, loaded at its first call and kept for the run (an oversized
    /// answer is fetched again from the same loaded library).
    std::unique_ptr<Bibliotheque> intergiciel;
    /// The scanner and the image converter of a capture, the platform's unless a test
    /// put its own; made at their first use.
    std::unique_ptr<Scanner> scanner;
    std::unique_ptr<ConvertisseurImage> images;

    /// Full path of a file of the program folder.
    std::string fichier(std::string_view nom) const;
    /// Writes one line to LogsSV.txt (Ecrire_Log).
    void log(std::string_view message) const;
    /// The run's databases, opened at the first call (Ouvrir_Connexions).
    Connexions& bases();
    Scanner& numeriseur();
    ConvertisseurImage& convertisseur();
};

/// A run set up for the program folder `dossier`: console or platform interface,
/// connections not yet opened. Used by the entry point and by tests.
Run nouveau_run(const std::string& dossier, std::unique_ptr<Ui> ui = nullptr);

}  // namespace sv140
