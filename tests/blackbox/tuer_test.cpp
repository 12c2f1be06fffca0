// Every operation that writes, killed (SIGKILL) at random points of its run: the
// databases stay sound, each unit of work is wholly done or untouched, what the
// middleware acted on is not lost beyond the one item in flight, and the next run works
// and finds nothing left in its way.
//
// Each operation's shop is prepared once and saved; before each kill it is put back. A
// run left to finish from it gives the state after; each unit found after a kill must
// be as before or as after. The delay before the kill adapts so that the kills land
// inside the writes: between the first and the last unit of a run of many, and for a
// run that is one unit, after the middleware's answer was read and before the commit.
// SV140_TUER_ESSAIS sets the kills per operation (bench/tuer.sh: 200).
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <random>

#include "facturation.h"

namespace bb {
namespace {

namespace fs = std::filesystem;

int kills_voulus() {
    const char* v = std::getenv("SV140_TUER_ESSAIS");
    return v != nullptr && std::atoi(v) > 0 ? std::atoi(v) : 3;
}

/// Rows of the units a run writes: the unit's key first, then what it holds.
using Unites = std::function<Lignes()>;

struct Cas {
    std::string operation = "", entree = "";
    /// Null: the run is one unit, the whole of the shop's databases.
    Unites unites = nullptr;
    /// The units are written in the order of their rows.
    bool en_ordre = false;
    /// A run after a kill finishes every unit.
    bool reprise_complete = false;
    /// What the middleware recorded, against the units done: fails the test when a
    /// unit it acted on is lost beyond the one in flight.
    std::function<void(int faites, int total)> intergiciel = nullptr;
};

class Tuer : public BoiteNoire {
  protected:
    void SetUp() override {
        if (sous_wine()) {
            GTEST_SKIP() << "the kill points are timed on the native bridge";
        }
        BoiteNoire::SetUp();
    }
    std::string shop() const { return racine + "/Belvane_Classic"; }
    std::string modele() const { return racine + "/modele"; }
    Textes bases() const {
        Textes b = {pont(), hote()};
        if (existe(shop() + "/Temporaire.accdb")) {
            b.push_back(shop() + "/Temporaire.accdb");
        }
        return b;
    }
    static bool binaire(const fs::path& p) {
        const std::string n = p.filename().string();
        return n == "sv140" || n == "Scor" || n == "WebQuintara2.so";
    }
    /// The shop as it stands, the program files aside (they never change).
    void sauver() {
        fs::remove_all(modele());
        fs::copy(shop(), modele(), fs::copy_options::recursive);
        for (const auto& f : fs::recursive_directory_iterator(modele())) {
            if (binaire(f.path())) {
                fs::remove(f.path());
            }
        }
    }
    void restaurer() {
        for (const auto& d : {programme, magasin}) {
            for (const auto& f : fs::directory_iterator(d)) {
                if (!binaire(f.path())) {
                    fs::remove_all(f.path());
                }
            }
        }
        fs::copy(modele(), shop(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }
    /// Files a run writes under a provisional name.
    Textes restes() const {
        Textes r;
        for (const auto& f : fs::recursive_directory_iterator(shop())) {
            const std::string n = f.path().filename().string();
            if (n.starts_with(".sv140-copie-") || n.ends_with(".partiel") || n.ends_with(".tmp")) {
                r.push_back(f.path().string());
            }
        }
        return r;
    }
    bool archive_presente(const std::string& operation) const {
        const std::string mois = magasin + "/Sv140/" + horloge("%Y%m");
        if (!fs::exists(mois)) {
            return false;
        }
        for (const auto& f : fs::directory_iterator(mois)) {
            if (f.path().filename().string().starts_with("RSP_" + operation + "_")) {
                return true;
            }
        }
        return false;
    }
    std::map<std::string, Lignes> par_unite(const Cas& c, Textes* ordre = nullptr) {
        std::map<std::string, Lignes> u;
        if (!c.unites) {
            u["run"] = instantane(bases());
            return u;
        }
        for (Textes& l : c.unites()) {
            const std::string cle = l[0];
            if (ordre != nullptr && u.find(cle) == u.end()) {
                ordre->push_back(cle);
            }
            u[cle].push_back(std::move(l));
        }
        return u;
    }
    void tuer(const Cas& c);
};

void Tuer::tuer(const Cas& c) {
    sauver();
    const std::map<std::string, Lignes> avant = par_unite(c);
    const auto debut = std::chrono::steady_clock::now();
    ASSERT_TRUE(fin_propre(lancer({c.operation, magasin}, c.entree)));
    const double duree =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - debut).count();
    ASSERT_EQ(xml(fichier("ZEMO_Response.xml"), "//codeErreur"), Textes{"0"}) << log();
    Textes ordre;
    const std::map<std::string, Lignes> apres = par_unite(c, &ordre);
    int total = 0;
    for (const auto& [cle, lignes] : apres) {
        total += avant.count(cle) == 0 || avant.at(cle) != lignes;
    }
    ASSERT_GT(total, 0) << "the run writes nothing";

    const int voulus = kills_voulus();
    std::mt19937 alea(std::random_device{}());
    // The kills are drawn between the latest that came too early and the earliest that
    // came too late; each moves its bound halfway only, as a run's start varies.
    double tot = 0, tard = 1.5 * duree;
    int tues = 0, dedans = 0, echecs = 0, restes_vus = 0;
    for (int essai = 0;
         essai < 40 * voulus + 200 && (tues < voulus || dedans < std::max(1, voulus / 10));
         ++essai) {
        restaurer();
        const double instant =
            std::max(0.001, std::uniform_real_distribution<double>(tot, tard)(alea));
        tuer_apres = instant;
        const Execution e = lancer({c.operation, magasin}, c.entree);
        tuer_apres = 0;
        const int echecs_avant =
            ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
        if (e.statut < 128) {
            tard -= (tard - instant) / 2;
            continue;
        }
        ++tues;
        SCOPED_TRACE(c.operation + " killed after " + std::to_string(instant) + " s");
        for (const std::string& base : bases()) {
            EXPECT_EQ(sql(base, "PRAGMA integrity_check"), Lignes{{"ok"}}) << base;
        }
        // Each unit as before or as after; those done come first where the run has an order.
        const std::map<std::string, Lignes> maintenant = par_unite(c);
        int faites = 0;
        bool trou = false;
        for (const std::string& cle : ordre) {
            const Lignes rien, &l = maintenant.count(cle) ? maintenant.at(cle) : rien;
            const Lignes& a = avant.count(cle) ? avant.at(cle) : rien;
            if (l == a) {
                trou = trou || a != apres.at(cle);
                continue;
            }
            EXPECT_EQ(l, apres.at(cle)) << "unit " << cle << " half done";
            ++faites;
            EXPECT_FALSE(c.en_ordre && trou) << "unit " << cle << " done after one left out";
        }
        const bool commence = log().find("Retour_Reponse : True") != std::string::npos;
        const bool milieu = c.unites ? faites > 0 && faites < total : commence && faites == 0;
        dedans += milieu;
        if (c.intergiciel) {
            c.intergiciel(faites, total);
        }
        restes_vus += static_cast<int>(restes().size());

        // The next run: no stale lock, a fresh answer, nothing left behind.
        std::remove(fichier("ZEMO_Response.xml").c_str());
        EXPECT_TRUE(fin_propre(lancer({c.operation, magasin}, c.entree)));
        EXPECT_EQ(xml(fichier("ZEMO_Response.xml"), "/ZRMESSAGE/resultat/codeErreur").size(), 1u)
            << log();
        EXPECT_EQ(restes(), Textes{});
        if (c.reprise_complete) {
            EXPECT_EQ(par_unite(c), apres) << "the next run did not finish the units";
        }
        echecs +=
            ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() >
            echecs_avant;
        if (!milieu && faites == 0 && !(c.unites == nullptr && commence)) {
            tot += (instant - tot) / 2;
        } else if (!milieu) {
            tard -= (tard - instant) / 2;
        }
        if (tard - tot < 0.002) {
            tot = std::max(0.0, tot - 0.002);
            tard += 0.002;
        }
    }
    std::printf("tuer %-28s kills %4d  inside %4d  failures %3d  leftovers seen %3d\n",
                c.operation.c_str(), tues, dedans, echecs, restes_vus);
    EXPECT_GE(tues, voulus);
    EXPECT_GE(dedans, std::max(1, voulus / 10))
        << "too few kills inside the writes; kills between " << tot << " and " << tard
        << " s, a whole run " << duree << " s";
}

class TuerSimulateur : public Tuer {
  protected:
    void SetUp() override {
        Tuer::SetUp();
        if (IsSkipped()) {
            return;
        }
        professionnel();
        reussir("f_LireCPS");
        outil({"carte", racine, "famille"});
    }
    void reussir(const std::string& operation) {
        ASSERT_TRUE(fin_propre(BoiteNoire::operation(operation)));
        ASSERT_EQ(xml(fichier("ZEMO_Response.xml"), "//codeErreur"), Textes{"0"}) << log();
    }
    /// The invoices the simulator holds.
    int factures_simulees() const {
        int n = 0;
        for (const std::string& l : lignes(lire(fichier("zrsim/factures.txt")).value_or(""))) {
            n += l.starts_with("facture\t");
        }
        return n;
    }
    int factures_stockees() const {
        return std::stoi(sql(pont(), "SELECT count(*) FROM T_InfosFacture")[0][0]);
    }
};

TEST_F(TuerSimulateur, ProfessionalCard) {
    // The card the set-up read, forgotten: the run stores it again.
    sql(pont(), "DELETE FROM T_InfosSituation_CPS; DELETE FROM T_InfosCPS");
    tuer({.operation = "f_LireCPS"});
}

TEST_F(TuerSimulateur, VitaleCardReadThenLinked) {
    tuer({.operation = "f_LireCVitale"});
    restaurer();
    reussir("f_LireCVitale");
    const Lignes b = sql(hote(),
                         "SELECT Fournisseur, Rubrique1, [Plage-Mini] FROM [Sélection Verres]"
                         " ORDER BY rowid LIMIT 1");
    ASSERT_EQ(b.size(), 1u);
    const std::string& n = b[0][1];
    client("7, '" + b[0][0] + "', '" + n.substr(0, 4) + "-" + n.substr(4, 2) + "-" + n.substr(6) +
           " 00:00:00', " + b[0][2] + ", ''");
    tuer({.operation = "f_MettreAJourIdEtc"});
}

TEST_F(TuerSimulateur, InvoiceCreatedThenDeleted) {
    outil({"facture", racine, "famille", "3"});
    // The middleware's invoices are its own: one it made (or deleted) that the shop
    // does not show is only the one in flight, and its answer is kept: in the archive,
    // or killed before the archive, still in the exchange file.
    const auto en_vol = [&](const std::string& operation) {
        return [&, operation](int, int) {
            const int ecart = std::abs(factures_simulees() - factures_stockees());
            EXPECT_LE(ecart, 1);
            EXPECT_TRUE(ecart == 0 || archive_presente(operation) ||
                        existe(fichier("ZEMO_SvResponse.xml")))
                << "answer lost";
        };
    };
    tuer({.operation = "f_CreerFacture", .intergiciel = en_vol("f_CreerFacture")});

    restaurer();
    reussir("f_CreerFacture");
    const std::string numero = sql(pont(), "SELECT Info_Facture_NUMFAC FROM T_InfosFacture")[0][0];
    sql(pont(), "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture) VALUES ('" + numero +
                    "'); INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_nom) VALUES ('" +
                    numero + "', 'p.pdf')");
    ecrire(fichier("ZEMO_Request.xml"), "<BelvaneClassicII><donneesFacture><numeroFacture>X" +
                                            numero +
                                            "</numeroFacture></donneesFacture></BelvaneClassicII>");
    tuer({.operation = "f_SupprimerFacture", .intergiciel = en_vol("f_SupprimerFacture")});
}

class TuerScript : public Tuer {
  protected:
    void SetUp() override {
        Tuer::SetUp();
        if (IsSkipped()) {
            return;
        }
        professionnel();
        utiliser_script();
    }
};

// A lot of a thousand invoices: each is recorded on its slip with its organisation.
TEST_F(TuerScript, LotOfAThousandInvoices) {
    sql(pont(),
        "UPDATE T_InfoParam SET Taille_Buffer = 4000000;"
        "WITH RECURSIVE k(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM k WHERE i < 1000)"
        " INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture) SELECT i FROM k;"
        "INSERT INTO T_InfosFacture (Info_Facture_NUMFAC)"
        " SELECT Info_Bordereau_numFacture FROM T_InfosBordereaux;");
    std::vector<FactureEnvoyee> lot;
    for (int i = 1; i <= 1000; ++i) {
        const std::string caisse = std::to_string(100 + i % 20);
        lot.push_back({std::to_string(i), std::to_string(i % 20 + 1), "03", caisse, "0001",
                       "CAISSE " + caisse});
    }
    scripter(0, reponse("f_EnvoyerToutesFactures", "0", "", donnees_envoi(lot)));
    tuer({"f_EnvoyerToutesFactures", "",
          [&] {
              return sql(pont(),
                         "SELECT b.Info_Bordereau_numFacture, b.Info_Bordereau_NumLot_FSE,"
                         " length(b.Info_Bordereau_ID_lotInterne), b.Info_Bordereau_Regroupement,"
                         " b.Info_Bordereau_LibelRegroupement, a.Info_Adresse_libelle,"
                         " f.Info_Facture_Nlot FROM T_InfosBordereaux b JOIN T_InfosFacture f"
                         " ON f.Info_Facture_NUMFAC = b.Info_Bordereau_numFacture"
                         " LEFT JOIN T_InfosAdresse a ON a.Info_Adresse_ID = b.Info_Adresse_ID_FK"
                         " ORDER BY b.Info_Bordereau_ID");
          },
          true, true,
          // The middleware sent them all: once the recording has begun, those not
          // recorded yet can be recorded again from the archived answer.
          [&](int faites, int total) {
              EXPECT_TRUE(faites == 0 || faites == total ||
                          archive_presente("f_EnvoyerToutesFactures"))
                  << "lot answer lost";
          }});
}

// The returns of 300 invoices, then the edition date of the generic insurer's slips.
TEST_F(TuerScript, ReturnsOfThreeHundredInvoices) {
    constexpr int n = 300;
    sql(hote(),
        "INSERT INTO [Fichier des Mutuelles] (Compteur, [Nom Mutuelle]) VALUES (7, '[TPGEN]');"
        "INSERT INTO [Contrat Mutuelles] ([N°], Lien) VALUES (3, 7);"
        "WITH RECURSIVE k(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM k WHERE i < 300)"
        " INSERT INTO [Bordereau Mutuelle] (NumFicheCommande, NumFacture, Mutuelle, [Date],"
        " TotalTmoCPAM, TotalCPAM, TotalMutuelle) SELECT 'FC' || i, 1000 + i, 1 + 2 * (i % 2),"
        " '2024-02-01 00:00:00', 0, 30, 20 FROM k");
    sql(pont(), "UPDATE T_InfoParam SET Taille_Buffer = 4000000");
    ecrire(fichier("ZEMO_Request.xml"),
           "<ZRMESSAGE><donnees><datedebut>20240101</datedebut><datedfin>20240131</datedfin>"
           "</donnees></ZRMESSAGE>");
    std::string recaps, paiements;
    for (int i = 1; i <= n; ++i) {
        const std::string f = std::to_string(1000 + i);
        recaps +=
            "<recapitulatifFacture><dateFacture>20240201</dateFacture><libelleOrgaDest>"
            "CPAM</libelleOrgaDest><montantTotalHonoraires>5000</montantTotalHonoraires>"
            "<numeroFacture>" +
            f +
            "</numeroFacture><etatFacture>Paye</etatFacture><benef><nom>DUPONT</nom>"
            "</benef></recapitulatifFacture>";
        paiements += "<donneesFacture><numeroFacture>" + f +
                     "</numeroFacture><montantPaiementAMORSP>30</montantPaiementAMORSP>"
                     "<montantPaiementAMCRSP>20</montantPaiementAMCRSP></donneesFacture>";
    }
    scripter(0, reponse("f_LireInfosRetourFacture", "0", "",
                        "<donneesRetourFacture>" + recaps + "<RSP>" + paiements +
                            "</RSP></donneesRetourFacture>"));
    tuer({"f_LireInfosRetourFacture", "",
          [&] {
              Lignes l = sql(hote(),
                             "SELECT NumFacture, Libel_Rejet, Motif, Paiement_RO, Paiement_RC,"
                             " Pointage, Solde, Date_pointage FROM [Bordereau Mutuelle]"
                             " ORDER BY NumFacture");
              // The edition date after them, a unit of its own.
              for (Textes& d : sql(hote(),
                                   "SELECT 'zz-edition', DateEdition FROM"
                                   " [Bordereau Mutuelle] ORDER BY NumFacture")) {
                  l.push_back(std::move(d));
              }
              return l;
          },
          true, true});
}

// Fifty attachments handed to the middleware one by one.
TEST_F(TuerScript, TransferOfFiftyAttachments) {
    fs::create_directories(magasin + "/Sv140Scor/202401");
    for (int i = 1; i <= 50; ++i) {
        ecrire(magasin + "/Sv140Scor/202401/" + std::to_string(i) + ".pdf", "%PDF-1.4\n");
    }
    sql(pont(),
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 50)"
        " INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Chemin, InfosSCor_nom,"
        " idDossier) SELECT 100 + i, 'C:\\Ancien\\_Magasin\\Sv140Scor\\202401\\',"
        " i || '.pdf', 1 FROM n");
    std::string pris = reponse("f_TransfertPJ", "0", "");
    pris.insert(pris.find("<donnees>"), "<accesService>1</accesService>\r\n");
    scripter(0, pris);
    tuer({"f_TransfertPJ", "",
          [&] {
              return sql(pont(),
                         "SELECT InfosSCor_ID, InfosSCor_DateEnvoi, Pointage, C_Erreur,"
                         " InfosSCor_LibelError FROM T_InfosSCor ORDER BY InfosSCor_NUMFAC");
          },
          true, true,
          // Every attachment the middleware took is recorded but the one in flight. The
          // requests it kept are counted, not its call counter: a kill during the
          // counter's write leaves it empty.
          [&](int faites, int) {
              int envoyees = 0;
              for (const auto& f : fs::directory_iterator(programme + "/zrscript")) {
                  envoyees += f.path().filename().string().starts_with("requete_");
              }
              EXPECT_TRUE(envoyees == faites || envoyees == faites + 1)
                  << envoyees << " sent, " << faites << " recorded";
          }});
}

// A capture session: the prescription scanned, the other two kinds collected on paper.
TEST_F(TuerScript, CaptureSessionStore) {
    const std::string sane = racine + "/sane";
    fs::create_directories(sane);
    ecrire(sane + "/dll.conf", "test\n");
    ecrire(sane + "/test.conf", "number_of_devices 1\ntest-picture \"Color pattern\"\n");
    setenv("SANE_CONFIG_DIR", sane.c_str(), 1);
    setenv("SANE_DEFAULT_DEVICE", "test:0", 1);
    std::string groupes;
    for (const char* groupe : {"Ordonnance", "Cerfa", "Autre"}) {
        groupes += std::string("<") + groupe + "><Dossier>OPT</Dossier><Id>5</Id><Facture>123" +
                   "</Facture><Compteur>1</Compteur></" + groupe + ">";
    }
    ecrire(fichier("dctsScor.xml"),
           "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><ZRMESSAGE><requete><fonction>"
           "<f_Scor>" +
               groupes + "</f_Scor></fonction></requete></ZRMESSAGE>");
    // The store writes a row per kind, with its PDF in the archive.
    tuer({"f_Scor", "o\nn\nn\nDPOD\n7\n",
          [&] {
              Lignes l = sql(pont(),
                             "SELECT InfosSCor_Nature, InfosSCor_NUMFAC, InfosSCor_Mode,"
                             " InfosSCor_Chemin || InfosSCor_nom FROM T_InfosSCor"
                             " ORDER BY InfosSCor_ID");
              for (Textes& r : l) {
                  r[3] = existe(r[3]) ? "archivé" : "absent";
              }
              return l;
          },
          true, false});
    unsetenv("SANE_CONFIG_DIR");
    unsetenv("SANE_DEFAULT_DEVICE");
}

}  // namespace
}  // namespace bb
