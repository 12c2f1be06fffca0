#include "sim/reponse.h"

namespace sv140::sim {

Reponse reponse_succes(std::string appelant) {
    Reponse r;
    r.appelant = std::move(appelant);
    return r;
}

Reponse reponse_erreur(std::string appelant, int code, std::string libelle) {
    Reponse r;
    r.appelant = std::move(appelant);
    r.codeErreur = code;
    r.libelleErreur = std::move(libelle);
    return r;
}

Enveloppe enveloppe_de(std::string_view operation) {
    // The card functions come from the reader module, which writes only the document
    // type line; the others from the online module, which writes a declaration.
    if (operation == "f_LireCVitale" || operation == "f_MettreAJourCV" ||
        operation == "f_LireCPS" || operation == "f_InitialisationPS") {
        return Enveloppe::Doctype;
    }
    if (operation == "f_LireInfosComplementaire" || operation == "f_RecupMessage") {
        return Enveloppe::DeclarationEtDoctype;
    }
    return Enveloppe::Declaration;
}

std::string ecrire_reponse(const Reponse& reponse, Enveloppe enveloppe) {
    Element racine("ZRMESSAGE");
    racine.ajouter("appelant", reponse.appelant);
    Element& resultat = racine.ajouter("resultat");
    resultat.ajouter("codeErreur", std::to_string(reponse.codeErreur));
    resultat.ajouter("libelleErreur", reponse.libelleErreur);
    for (const Element& e : reponse.complements) {
        resultat.ajouter_arbre(e);
    }
    if (reponse.codeErreur == 0 || reponse.donnees_en_erreur) {
        resultat.ajouter_arbre(reponse.donnees);
    }

    std::string prologue;
    switch (enveloppe) {
        case Enveloppe::Doctype:
            prologue = "<!DOCTYPE ZRMESSAGE>\r\n";
            break;
        case Enveloppe::Declaration:
            prologue = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n";
            break;
        case Enveloppe::DeclarationEtDoctype:
            prologue =
                "<?xml version='1.0' encoding='ISO-8859-1' standalone='yes'?>\r\n"
                "<!DOCTYPE ZRMESSAGE>\r\n";
            break;
    }
    return prologue + serialiser(racine, Forme{});
}

}  // namespace sv140::sim
