// Two workstations of one shop: each its own program folder (bridge, middleware, run
// lock), both on the one data folder of the shop's share. The databases are where they
// meet: whatever the two do at the same time, an invoice's lines stay under its own key,
// no write is lost, and a workstation that finds the other writing waits for it (a
// bounded time) instead of failing.
//
// Each workstation's middleware keeps its own state. The second one numbers its
// invoices and lots from 500001: two middlewares of one professional never give one
// number twice, and with both numbering from 1 the slips and lots, matched by invoice
// number, would mix the two workstations' invoices and hide or fake the faults looked
// for here.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <thread>

#include "facturation.h"

namespace fs = std::filesystem;

namespace bb {
namespace {

constexpr long long kDebutSecond = 500000;

class Postes : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        horloge_figee = false;  // a run that waits for a lock must see time pass
        professionnel("1", 3600);
        ASSERT_EQ(outil({"carte", racine, "famille"}).statut, 0);
        ASSERT_TRUE(fin_propre(operation("f_LireCPS")));
        ASSERT_EQ(xml(fichier("ZEMO_Response.xml"), "//codeErreur"), Textes{"0"}) << log();
    }

    /// A second workstation, its middleware numbering from `debut` + 1.
    std::string second_poste(const std::string& nom, long long debut) {
        const std::string dossier = poste(nom);
        ecrire(dossier + "/zrsim/factures.txt",
               "numerotation\tderniereFacture=" + std::to_string(debut) +
                   "\tdernierLot=" + std::to_string(debut) + "\n");
        return dossier;
    }

    /// The host's claim for a pair of glasses whose frame costs `monture` euros.
    static std::string claim(const std::string& monture) {
        const std::vector<Champs> actes = {
            champs("designation=Monture;codeActe=MON;codeLPP=2210546;qualificatifDepense=;"
                   "nombreUnite=1;MontantAMC=30;PartMontantAMO=0.05;montantNet=" +
                   monture + ";dateSoins=20240305"),
            champs("designation=Verre droit;codeActe=VRS;codeLPP=2227908;qualificatifDepense=;"
                   "nombreUnite=1;MontantAMC=60;PartMontantAMO=0.05;montantNet=95.5;"
                   "dateSoins=20240305"),
            champs("designation=Verre gauche;codeActe=VRS;codeLPP=2227920;qualificatifDepense=;"
                   "nombreUnite=1;MontantAMC=60;PartMontantAMO=0.05;montantNet=95.5;"
                   "dateSoins=20240305"),
        };
        return document_facture({}, &actes);
    }

    /// `nom` on workstation `dossier`; its answer's code and label.
    Textes passer(const std::string& dossier, const std::string& nom) {
        const Execution e = operation_du_poste(dossier, nom);
        EXPECT_TRUE(fin_propre(e)) << nom;
        Textes r = xml(dossier + "/ZEMO_Response.xml", "//codeErreur | //libelleErreur");
        r.resize(2);  // an unreadable answer reads as an empty code
        return r;
    }

    /// Creates an invoice on `dossier` with this frame, then the host's slip for it; its
    /// number.
    std::string facturer(const std::string& dossier, const std::string& monture) {
        ecrire(dossier + "/ZEMO_Request.xml", claim(monture));
        const Textes r = passer(dossier, "f_CreerFacture");
        EXPECT_EQ(r[0], "0") << "f_CreerFacture on " << dossier << ": " << r[1];
        const Textes numero = xml(dossier + "/ZEMO_Response.xml", "//numeroFacture");
        if (numero.size() != 1) {
            ADD_FAILURE() << "no invoice number from " << dossier;
            return "";
        }
        sql(pont(),
            "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture,"
            " Info_Bordereau_typeCertification) VALUES ('" +
                numero[0] + "', 'Sesam-Vitale')");
        return numero[0];
    }

    /// An attachment of invoice `facture` left by a capture session, waiting to be sent.
    void piece(const std::string& facture) {
        char nom[80];
        std::snprintf(nom, sizeof nom, "20240305143012_%09lld_ORDN_991001231_000000001.pdf",
                      std::stoll(facture));
        fs::create_directories(magasin + "/Sv140Scor/202403");
        ecrire(magasin + "/Sv140Scor/202403/" + nom, "%PDF-1.4\n%%EOF\n");
        sql(pont(),
            "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, InfosSCor_Chemin,"
            " InfosSCor_nom, InfosSCor_DateGeneration, idDossier, typeDossier) VALUES ('" +
                facture + "', 'ORDN', 'E:\\Boutique\\Sv140Scor\\202403\\', '" + nom +
                "', '2024-03-05 14:30:12', 1, 'LUN')");
    }

    /// The attachments the middlewares of these workstations received.
    std::set<std::string> receptions(const Textes& dossiers) {
        std::set<std::string> noms;
        for (const auto& d : dossiers) {
            for (const auto& l : lignes(lire(d + "/zrsim/pieces.txt").value_or(""))) {
                const auto debut = l.find("nomPJ="), fin = l.find(".pdf");
                if (debut != l.npos && fin != l.npos) {
                    noms.insert(l.substr(debut + 6, fin + 4 - debut - 6));
                }
            }
        }
        return noms;
    }

    /// A run and how long it took.
    struct Issue {
        Textes reponse;  // code, label
        double secondes = 0;
    };
    /// Each operation on its workstation, all at once.
    std::vector<Issue> en_meme_temps(const std::vector<std::pair<std::string, std::string>>& runs) {
        std::vector<Issue> issues(runs.size());
        std::vector<std::thread> fils;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            fils.emplace_back([&, i] {
                const auto debut = std::chrono::steady_clock::now();
                issues[i].reponse = passer(runs[i].first, runs[i].second);
                issues[i].secondes =
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - debut).count();
            });
        }
        for (auto& f : fils) {
            f.join();
        }
        return issues;
    }

    /// A claim to create on this workstation, an invoice waiting to be sent on a second
    /// one, an attachment waiting to be transferred from a third: the three operations
    /// that write, each on its own workstation.
    std::vector<std::pair<std::string, std::string>> trois_postes() {
        const std::string lot = second_poste("SV140_2", kDebutSecond);
        const std::string transfert = poste("SV140_3");
        piece(facturer(lot, "120.25"));
        ecrire(fichier("ZEMO_Request.xml"), claim("130.25"));
        return {{programme, "f_CreerFacture"},
                {lot, "f_EnvoyerToutesFactures"},
                {transfert, "f_TransfertPJ"}};
    }
};

TEST_F(Postes, LinesGoUnderTheKeyTheInsertWasGiven) {
    // Another invoice gets a larger key while this one is stored.
    sql(pont(),
        "CREATE TRIGGER autre_poste AFTER INSERT ON T_InfosFacture"
        " WHEN NEW.Info_Facture_NUMFAC <> 'autre' BEGIN"
        " INSERT INTO T_InfosFacture (Info_Facture_NUMFAC) VALUES ('autre'); END");
    facturer(programme, "110.25");
    EXPECT_EQ(sql(pont(),
                  "SELECT f.Info_Facture_NUMFAC, count(d.Info_Facture_ID_FK) FROM T_InfosFacture f"
                  " LEFT JOIN T_InfosDetailFacture d ON d.Info_Facture_ID_FK = f.Info_Facture_ID"
                  " GROUP BY f.Info_Facture_ID ORDER BY f.Info_Facture_ID"),
              (Lignes{{"1", "3"}, {"autre", "0"}}));
    EXPECT_NE(
        log().find("Clé de la facture 1 : 1, mais la plus grande clé de T_InfosFacture est 2"),
        std::string::npos)
        << log();
}

TEST_F(Postes, AWorkstationWaitsForTheOthersShortWrite) {
    const auto runs = trois_postes();
    auto ecriture = std::make_unique<EcritureEnCours>(pont());
    std::thread fin_ecriture([&] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        ecriture.reset();
    });
    const std::vector<Issue> issues = en_meme_temps(runs);
    fin_ecriture.join();
    for (std::size_t i = 0; i < runs.size(); ++i) {
        EXPECT_EQ(issues[i].reponse[0], "0") << runs[i].second << ": " << issues[i].reponse[1];
        EXPECT_GE(issues[i].secondes, 0.5) << runs[i].second << " did not meet the other's write";
    }
    EXPECT_EQ(sql(pont(),
                  "SELECT (SELECT count(*) FROM T_InfosDetailFacture),"
                  " (SELECT count(*) FROM T_InfosBordereaux WHERE Info_Bordereau_NumLot_FSE"
                  " IS NOT NULL), (SELECT count(*) FROM T_InfosSCor WHERE InfosSCor_DateEnvoi"
                  " IS NOT NULL)"),
              (Lignes{{"6", "1", "1"}}));
}

TEST_F(Postes, AWorkstationGivesUpAfterFiveSecondsOfTheOthersWrite) {
    const auto runs = trois_postes();
    const Lignes avant = instantane({pont(), hote()});
    std::vector<Issue> issues;
    {
        // Held until every run has ended.
        EcritureEnCours ecriture(pont());
        issues = en_meme_temps(runs);
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        EXPECT_EQ(issues[i].reponse[0], "99") << runs[i].second;
        EXPECT_NE(issues[i].reponse[1].find("database is locked"), std::string::npos)
            << runs[i].second << ": " << issues[i].reponse[1];
        EXPECT_GE(issues[i].secondes, 4.5) << runs[i].second;
        EXPECT_LT(issues[i].secondes, 8.0) << runs[i].second;
    }
    EXPECT_EQ(instantane({pont(), hote()}), avant);
}

TEST_F(Postes, TwoWorkstationsInvoiceSendAndTransferAtOnce) {
    const std::string second = second_poste("SV140_2", kDebutSecond);
    constexpr int kTours = 8;
    // Each round's frame price tells which claim an invoice's lines come from.
    auto monture = [](int poste, int tour) { return std::to_string(100 * poste + tour) + ".25"; };
    auto travailler = [&](const std::string& dossier, int numero_poste) {
        for (int tour = 1; tour <= kTours; ++tour) {
            const std::string facture = facturer(dossier, monture(numero_poste, tour));
            if (facture.empty()) {
                return;
            }
            EXPECT_EQ(passer(dossier, "f_EnvoyerToutesFactures").front(), "0") << dossier;
            piece(facture);
            EXPECT_EQ(passer(dossier, "f_TransfertPJ").front(), "0") << dossier;
        }
    };
    std::thread autre(travailler, second, 2);
    travailler(programme, 1);
    autre.join();

    // Every invoice once, with its own three lines; no line without its invoice.
    Lignes attendues;
    for (int poste : {1, 2}) {
        for (int tour = 1; tour <= kTours; ++tour) {
            attendues.push_back({std::to_string((poste == 1 ? 0 : kDebutSecond) + tour), "3",
                                 monture(poste, tour)});
        }
    }
    EXPECT_EQ(sql(pont(),
                  "SELECT f.Info_Facture_NUMFAC, count(d.Info_Facture_ID_FK),"
                  " max(CASE WHEN d.Info_Facture_CODLPP = '2210546'"
                  " THEN d.Info_DetailFacture_prixUnitaire END)"
                  " FROM T_InfosFacture f LEFT JOIN T_InfosDetailFacture d"
                  " ON d.Info_Facture_ID_FK = f.Info_Facture_ID GROUP BY f.Info_Facture_ID"
                  " ORDER BY CAST(f.Info_Facture_NUMFAC AS INTEGER)"),
              attendues);
    EXPECT_EQ(sql(pont(),
                  "SELECT count(*) FROM T_InfosDetailFacture WHERE Info_Facture_ID_FK"
                  " NOT IN (SELECT Info_Facture_ID FROM T_InfosFacture)"),
              Lignes{{"0"}});
    // Every slip carries the lot its own workstation sent it in.
    EXPECT_EQ(sql(pont(),
                  "SELECT count(*), sum(b.Info_Bordereau_NumLot_FSE IS NOT NULL"
                  " AND CAST(b.Info_Bordereau_NumLot_FSE AS INTEGER) = f.Info_Facture_Nlot"
                  " AND (f.Info_Facture_Nlot > 500000) = (CAST(f.Info_Facture_NUMFAC AS INTEGER)"
                  " > 500000)) FROM T_InfosBordereaux b JOIN T_InfosFacture f"
                  " ON f.Info_Facture_NUMFAC = b.Info_Bordereau_numFacture"),
              (Lignes{{std::to_string(2 * kTours), std::to_string(2 * kTours)}}));
    // Every attachment sent, and recorded so.
    EXPECT_EQ(sql(pont(),
                  "SELECT count(*), sum(InfosSCor_DateEnvoi IS NOT NULL AND Pointage = 0)"
                  " FROM T_InfosSCor"),
              (Lignes{{std::to_string(2 * kTours), std::to_string(2 * kTours)}}));
    // Both workstations read the same waiting rows: an attachment may reach the two
    // middlewares, but each reaches one.
    EXPECT_EQ(receptions({programme, second}).size(), 2u * kTours);
}

}  // namespace
}  // namespace bb
