// The simulator's attachments through its entry point: what a transfer accepts and why it
// refuses, each attachment's status as its invoice is sent and the simulated days go
// by, the sent invoices still missing one, and which attachments may be deleted.
#include "banc.h"

namespace sv140::sim::test {
namespace {

using Textes = std::vector<std::string>;

const std::string kPs = bloc_ps(kIdNat, kIdFac1, "1");

/// The name the bridge gives the `compteur`th attachment of an invoice.
std::string nom(int facture, const std::string& nature, int compteur) {
    const auto neuf = [](int n) {
        const std::string t = std::to_string(n);
        return std::string(9 - t.size(), '0') + t;
    };
    return "20261124101500_" + neuf(facture) + "_" + nature + "_" + kIdFac1 + "_" + neuf(compteur) +
           ".pdf";
}

FactureSimulee facture(long long numero, bool degradee, bool lpp, bool envoyee) {
    FactureSimulee f;
    f.numeroFacture = numero;
    f.typeCertification = degradee ? kDegrade : "Sesam-Vitale";
    f.actes.emplace_back().codeLPP = lpp ? "2210546" : "";
    f.numeroLot = envoyee ? "000001" : "";
    return f;
}

class Pieces : public Sim {
  protected:
    void SetUp() override {
        Sim::SetUp();
        std::filesystem::create_directories(dossier_ / "pj");
    }
    std::string dossier_pj() const { return (dossier_ / "pj").string() + "/"; }
    /// A file of the attachments' folder.
    void ecrire(const std::string& nom, const std::string& contenu) {
        ASSERT_TRUE(ecrire_fichier(dossier_pj() + nom, contenu));
    }
    /// A PDF of `taille` bytes.
    void pdf(const std::string& nom, std::size_t taille = 100) {
        ecrire(nom, "%PDF-1.4\n" + std::string(taille - 9, 'x'));
    }
    std::string transfert(const std::string& nomPJ, const std::string& dossier = "") {
        return requete("f_TransfertPJ", kPs + "<cheminPJ>" +
                                            (dossier.empty() ? dossier_pj() : dossier) +
                                            "</cheminPJ><nomPJ>" + nomPJ +
                                            "</nomPJ><formatPJ>0</formatPJ><mode>a</mode>");
    }
    /// The answer of f_LireInfosRetourPJ for these invoices.
    Resultat statuts(const Textes& numeros) {
        std::string liste;
        for (const std::string& n : numeros) {
            liste += "<numeroFacture>" + n + "</numeroFacture>";
        }
        return appeler(
            requete("f_LireInfosRetourPJ", kPs + "<listeFacture>" + liste + "</listeFacture>"));
    }
    Textes codes(int numero) {
        return statuts({std::to_string(numero)}).textes("donnees/listeFacture/facture/PJ/code");
    }
    void semer(const std::vector<FactureSimulee>& factures) {
        std::vector<long long> numeros;
        std::string erreur;
        ASSERT_TRUE(Ajouter_Factures(zrsim_, factures, numeros, erreur)) << erreur;
    }
};

std::string suppression(const std::string& nomPJ) {
    return requete("f_SupprimerPJ", kPs + "<nomPJ>" + nomPJ + "</nomPJ>");
}

TEST_F(Pieces, TransfertAccepteOuRefuse) {
    const std::string trop = "Fichier trop volumineux : 1048577 octets pour 1048576 autorisés";
    const std::string pas_pdf = "Le fichier n'est pas un PDF";
    pdf("limite.pdf", 1 << 20);
    pdf("gros.pdf", (1 << 20) + 1);
    ecrire("image.pdf", "\xFF\xD8\xFF\xE0 JFIF");
    ecrire("gros-image.pdf", std::string((1 << 20) + 1, 'x'));
    pdf("ordonnance à signer.pdf");
    const struct {
        const char* nomPJ;
        std::string dossier;
        Textes erreurs;  // none: accepted
    } cas[] = {
        {"limite.pdf", "", {}},
        // The folder without its separator, a name with an accent and blanks.
        {"ordonnance à signer.pdf", (dossier_ / "pj").string(), {}},
        {"gros.pdf", "", {trop}},
        {"image.pdf", "", {pas_pdf}},
        {"gros-image.pdf", "", {pas_pdf, trop}},
        {"absent.pdf", "", {"Fichier introuvable : " + dossier_pj() + "absent.pdf"}},
        {"", "", {"Nom de la pièce jointe absent"}},
    };
    for (const auto& c : cas) {
        SCOPED_TRACE(c.nomPJ);
        const Resultat r = appeler(transfert(c.nomPJ, c.dossier));
        EXPECT_EQ(r.code(), c.erreurs.empty() ? "0" : "170") << r.brut;
        EXPECT_EQ(r.texte("libelleErreur"), c.erreurs.empty() ? "" : "Pièce jointe refusée");
        EXPECT_EQ(r.textes("accesService"), Textes{"1"});
        EXPECT_EQ(r.textes("donnees/erreur"), c.erreurs);
    }
    const std::vector<PieceEtStatut> recues = Lire_Pieces(zrsim_);
    ASSERT_EQ(recues.size(), 2u);
    EXPECT_EQ(recues[0].piece.taille, 1 << 20);
    // A name the bridge did not make holds no invoice.
    EXPECT_EQ(recues[1].piece.numeroFacture, 0);
    EXPECT_EQ(recues[1].statut, 1);
}

TEST_F(Pieces, StatutsSuiventLEnvoiEtLesJours) {
    semer({facture(1, false, true, false), facture(2, true, false, false)});
    const std::string ordn1 = nom(1, "ORDN", 1), fsnc1 = nom(1, "FSNC", 2),
                      fsnc2 = nom(2, "FSNC", 3), ordn1b = nom(1, "ORDN", 4);
    for (const std::string& n : {ordn1, fsnc1, fsnc2, ordn1b}) {
        pdf(n);
    }
    const struct {
        int jours;  // simulated days added before the call
        std::string requete;
        int code;
        Textes facture1, facture2;
    } etapes[] = {
        {0, transfert(ordn1), 0, {"8"}, {"2"}},
        {0, requete("f_EnvoyerToutesFactures", kPs), 0, {"9"}, {"2"}},
        {0, transfert(fsnc1), 0, {"9", "12"}, {"2"}},
        {0, transfert(fsnc2), 0, {"9", "12"}, {"9"}},
        {1, transfert(fsnc2), 0, {"10", "12"}, {"10", "1070"}},
        // Received after its invoice was sent: it waits for its own day.
        {0, transfert(ordn1b), 0, {"10", "12", "9"}, {"10", "1070"}},
        {0, transfert(ordn1b), 0, {"10", "12", "9", "1070"}, {"10", "1070"}},
        {0,
         suppression(ordn1),
         kPieceJointeDejaTransmise,
         {"10", "12", "9", "1070"},
         {"10", "1070"}},
        {0, suppression(fsnc1), 0, {"10", "13", "9", "1070"}, {"10", "1070"}},
        {0, suppression(fsnc1), kPieceJointeInconnue, {"10", "13", "9", "1070"}, {"10", "1070"}},
        {0, suppression(ordn1b), 0, {"10", "13", "13", "1070"}, {"10", "1070"}},
        // Its duplicate went with it: the name comes anew.
        {0, transfert(ordn1b), 0, {"10", "13", "13", "1070", "9"}, {"10", "1070"}},
        {1, requete("f_ControlePJ", kPs), 0, {"0", "13", "13", "1070", "10"}, {"0", "1070"}},
    };
    for (std::size_t i = 0; i < std::size(etapes); ++i) {
        SCOPED_TRACE("etape " + std::to_string(i + 1));
        int decalage = 0;
        std::string erreur;
        ASSERT_TRUE(Avancer_Jours(zrsim_, etapes[i].jours, decalage, erreur)) << erreur;
        const Resultat r = appeler(etapes[i].requete);
        EXPECT_EQ(r.code(), std::to_string(etapes[i].code)) << r.texte("libelleErreur");
        EXPECT_EQ(codes(1), etapes[i].facture1);
        EXPECT_EQ(codes(2), etapes[i].facture2);
    }

    std::string erreur;
    ASSERT_TRUE(Forcer_Statut_Piece(zrsim_, ordn1, 5001, erreur)) << erreur;
    EXPECT_EQ(codes(1).at(0), "5001");
    ASSERT_TRUE(Forcer_Statut_Piece(zrsim_, ordn1, std::nullopt, erreur)) << erreur;
    EXPECT_EQ(codes(1).at(0), "0");
    EXPECT_FALSE(Forcer_Statut_Piece(zrsim_, "inconnue.pdf", 1, erreur));

    // Each invoice once, as requested; one without attachment is answered known or not.
    const Resultat r = statuts({"000000099", "000000002", "2", "000000003", "000000001"});
    EXPECT_EQ(r.textes("donnees/listeFacture/facture/numFact"),
              (Textes{"000000099", "000000002", "000000003", "000000001"}));
    EXPECT_EQ(r.textes("donnees/listeFacture/facture[1]/PJ/code"), Textes{"1"});
    EXPECT_EQ(r.textes("donnees/listeFacture/facture[2]/PJ/nomPJ"), (Textes{fsnc2, fsnc2}));
    EXPECT_EQ(r.textes("donnees/listeFacture/facture[3]/PJ/code"), Textes{"1"});
    EXPECT_EQ(r.textes("donnees/listeFacture/facture[3]/PJ/nomPJ"), Textes{""});
    semer({facture(3, false, false, false)});
    EXPECT_EQ(codes(3), Textes{"2"});
}

TEST_F(Pieces, ControleListeLesFacturesEnvoyeesSansLeurPiece) {
    semer({facture(6, false, true, true), facture(3, true, true, true),
           facture(1, false, true, true), facture(2, true, false, true),
           facture(4, false, true, true), facture(5, false, true, false),
           facture(7, false, false, true)});
    for (const std::string& n : {nom(3, "FSNC", 1), nom(4, "ORDN", 2), nom(6, "ORDN", 3)}) {
        pdf(n);
        ASSERT_EQ(appeler(transfert(n)).code(), "0");
    }
    ASSERT_EQ(appeler(suppression(nom(6, "ORDN", 3))).code(), "0");
    EXPECT_EQ(appeler(requete("f_ControlePJ", kPs)).textes("donnees/listeFacture/numeroFacture"),
              (Textes{"000000001", "000000002", "000000003", "000000006"}));
}

}  // namespace
}  // namespace sv140::sim::test
