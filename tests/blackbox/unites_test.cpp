// A card operation is one unit of work: when one of its statements fails, or a database
// it needs cannot be used, the databases stay exactly as they were and the host is told
// so, with the database and the reason. A database the operation does not need never
// changes its answer.
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>

#include "harnais.h"

namespace fs = std::filesystem;

namespace bb {
namespace {

const std::string kClient = "57, '150017512345642', '1975-05-12 00:00:00', 1, NULL";
const std::string kNonEnregistre = "Les données n'ont pas été enregistrées : ";

// The professional card of the run, another professional than the one stored before,
// with situations of these numbers.
std::string reponse_cps(const Textes& situations) {
    std::string d =
        "<contextePS><TYP_CPS>0</TYP_CPS><TYP_IDN>8</TYP_IDN><NUM_IDN>10009999999</NUM_IDN>"
        "<CLE_IDN>5</CLE_IDN><COD_CIV>31</COD_CIV><NOM_PRAT>NOUVEAU</NOM_PRAT>"
        "<PNOM_PRAT>Paul</PNOM_PRAT>";
    for (const auto& numero : situations) {
        d += "<situation><NUM_SIT>" + numero +
             "</NUM_SIT><MODE_EXE>0</MODE_EXE><RAIS_STR>OPTIQUE NEUVE</RAIS_STR>"
             "<NUM_IDFACPS>1111111" +
             numero + "</NUM_IDFACPS><CLE_IDFACPS>4</CLE_IDFACPS></situation>";
    }
    return reponse("f_LireCPS", "0", "", d + "</contextePS>");
}

// What stands in a database's place for one run.
enum class Etat {
    Absente,
    Vide,
    Texte,      // a file that is no database at all
    Corrompue,  // a database's header over what no database holds
    Dossier,
    LectureSeule,
    Verrouillee,  // another workstation holds a write transaction
    PointVirgule  // the shop folder's name holds a ';'
};

const char* decrire(Etat e) {
    constexpr const char* noms[] = {"missing",   "zero bytes", "not a database", "corrupt",
                                    "directory", "read-only",  "locked",         "';' in folder"};
    return noms[static_cast<int>(e)];
}

class Unites : public BoiteNoire {
  protected:
    std::string temporaire() const { return racine + "/Belvane_Classic/Temporaire.accdb"; }

    /// The answer says that nothing was stored because of `base`, and `raison` in its
    /// reason.
    ::testing::AssertionResult non_enregistre(const std::string& operation, const std::string& base,
                                              const std::string& raison = "") const {
        const Textes r = resultat(fichier("ZEMO_Response.xml"));
        const std::string tete = kNonEnregistre + chemin_du_pont(base) + " : ";
        if (r.size() == 3 && r[0] == operation && r[1] == "99" && r[2].starts_with(tete) &&
            r[2].size() > tete.size() && r[2].find(raison, tete.size()) != std::string::npos) {
            return ::testing::AssertionSuccess();
        }
        auto echec = ::testing::AssertionFailure() << "expected " << operation << ", 99, " << tete
                                                   << "<reason holding '" << raison << "'>; got";
        for (const auto& t : r) {
            echec << " [" << t << "]";
        }
        return echec;
    }

    /// A log line other than those giving the paths holds each of `morceaux`.
    bool journalise(const Textes& morceaux) const {
        for (const auto& l : lignes(log())) {
            bool tous = l.find("DB_") == std::string::npos;
            for (const auto& m : morceaux) {
                tous = tous && l.find(m) != std::string::npos;
            }
            if (tous) {
                return true;
            }
        }
        return false;
    }

    struct Passage {
        Execution execution;
        Lignes avant, apres;  // `bases` around the run
    };

    /// Runs `operation` on the data folder `dossier` with `etat` in place of the database
    /// `base`, then puts the database back. Nothing when the machine cannot make it so.
    std::optional<Passage> passer(const std::string& operation, const std::string& dossier,
                                  const std::string& base, Etat etat, const Textes& bases) {
        const std::string intacte = racine + "/intacte.accdb";
        fs::copy_file(base, intacte, fs::copy_options::overwrite_existing);
        switch (etat) {
            case Etat::Absente:
                fs::remove(base);
                break;
            case Etat::Vide:
                ecrire(base, "");
                break;
            case Etat::Texte:
                ecrire(base, "Ceci n'est pas une base de données.\r\n");
                break;
            case Etat::Corrompue:
                ecrire(base, std::string("SQLite format 3\0", 16) + std::string(8192, 'Z'));
                break;
            case Etat::Dossier:
                fs::remove(base);
                fs::create_directory(base);
                break;
            default:
                break;
        }
        Passage p;
        p.avant = instantane(bases);
        // Taken after the snapshot: closing any file of the database in this process
        // would release this process's locks on it.
        std::optional<Immuable> immuable;
        std::optional<EcritureEnCours> ecriture;
        if (etat == Etat::LectureSeule && !immuable.emplace(base).pris()) {
            std::printf("chattr +i is not supported here: the read-only case is skipped\n");
            fs::remove(intacte);
            return std::nullopt;
        }
        if (etat == Etat::Verrouillee) {
            ecriture.emplace(base);
            horloge_figee = false;  // the bridge waits a while, then gives up
        }
        utiliser_script();
        scripter(1, operation == "f_LireCPS" ? reponse_cps({"1", "2"})
                    : operation == "f_LireVersion"
                        ? reponse_version("4.4")
                        : reponse_carte({beneficiaire("DUPONT", "Jean", "19750512", "1")}));
        std::remove(fichier("ZEMO_Response.xml").c_str());
        p.execution = lancer({operation, chemin_du_pont(dossier)});
        horloge_figee = true;
        immuable.reset();
        ecriture.reset();
        p.apres = instantane(bases);
        fs::remove_all(base);
        fs::rename(intacte, base);
        return p;
    }

    /// A professional and a beneficiary list stored before the run.
    void garnir() {
        professionnel();
        sql(hote(),
            "DELETE FROM [Sélection Verres];"
            "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('earlier')");
    }
};

TEST_F(Unites, AFailedStatementUndoesTheWholeOperation) {
    // A fault the database itself raises, and how to take it away.
    struct Faute {
        std::string base;
        std::function<void()> preparer, defaire;
    };
    auto sans = [this](const std::string& base, const std::string& table,
                       const std::string& colonne) {
        return Faute{
            base, [=] { sql(base, "ALTER TABLE " + table + " DROP COLUMN " + colonne); },
            [=] { sql(base, "ALTER TABLE " + table + " ADD COLUMN " + colonne + " TEXT"); }};
    };
    const Faute refus{pont(),
                      [this] {
                          sql(pont(),
                              "CREATE TRIGGER refus BEFORE INSERT ON T_InfosSituation_CPS"
                              " WHEN CAST(NEW.InfoSituation_CPS_NUM_SIT AS INTEGER) = 2"
                              " BEGIN SELECT RAISE(ABORT, 'situation 2 interdite'); END");
                      },
                      [this] { sql(pont(), "DROP TRIGGER refus"); }};
    const Faute sans_droit = sans(pont(), "T_InfosCarteVitale", "Info_CV_DMUT_FIN_9");
    const std::string carte = reponse_carte({beneficiaire("DUPONT", "Jean", "19750512", "1")});
    // The beneficiary's card already stored by an earlier link, with another address.
    const Faute carte_connue{
        pont(),
        [&] {
            ecrire(fichier("ZEMO_SvResponse.xml"),
                   reponse_carte(
                       {beneficiaire("DUPONT", "Jean", "19750512", "1", "ADR_LN1=3 rue Vieille")}));
            Execution e = operation("f_MettreAJourIdEtc");
            ASSERT_TRUE(fin_propre(e));
            ASSERT_EQ(sql(pont(), "SELECT Info_CV_ADR_LN1 FROM T_InfosCarteVitale"),
                      Lignes{{"3 rue Vieille"}})
                << e.erreurs;
            sans_droit.preparer();
        },
        sans_droit.defaire};
    const std::string situations = "INSERT INTO T_InfosSituation_CPS";
    const std::string droits =
        "UPDATE T_InfosCarteVitale SET T_InfosCarteVitale.Info_CV_NB_DRT_AMO";
    struct Cas {
        std::string nom, operation;
        Faute faute;
        std::string reponse;      // the middleware's answer, or the card a link reads
        std::string instruction;  // how the failing statement begins
        std::string raison;       // what the database says
    };
    for (const Cas& c : std::vector<Cas>{
             {"a trigger refuses the second situation", "f_LireCPS", refus, reponse_cps({"1", "2"}),
              situations, "situation 2 interdite"},
             {"two situations of one number", "f_LireCPS", Faute{pont(), [] {}, [] {}},
              reponse_cps({"1", "1"}), situations, "UNIQUE constraint failed"},
             {"situations without a column", "f_LireCPS",
              sans(pont(), "T_InfosSituation_CPS", "InfoSituation_H_SIGN_LOT"),
              reponse_cps({"1", "2"}), situations, "no column named InfoSituation_H_SIGN_LOT"},
             {"beneficiary list without a column", "f_LireCVitale",
              sans(hote(), "[Sélection Verres]", "Num_Adherent"), carte,
              "INSERT INTO [Sélection Verres]", "no column named Num_Adherent"},
             {"new card without a rights column", "f_MettreAJourIdEtc", sans_droit, carte, droits,
              "no such column: Info_CV_DMUT_FIN_9"},
             {"known card without a rights column", "f_MettreAJourIdEtc", carte_connue, carte,
              droits, "no such column: Info_CV_DMUT_FIN_9"}}) {
        SCOPED_TRACE(c.nom);
        garnir();
        client(kClient);
        sql(pont(), "DELETE FROM T_InfosCarteVitale");
        c.faute.preparer();
        utiliser_script();
        scripter(1, c.reponse);
        ecrire(fichier("ZEMO_SvResponse.xml"), c.reponse);  // what the link reads
        const Lignes avant = instantane({pont(), hote()});
        Execution e = operation(c.operation);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(instantane({pont(), hote()}), avant);
        c.faute.defaire();
        EXPECT_TRUE(non_enregistre(c.operation, c.faute.base, c.raison));
        EXPECT_TRUE(journalise({"Erreur SQL", c.instruction})) << log();
        if (c.operation == "f_MettreAJourIdEtc") {
            // The link stores before its check, which shows the failure to the optician.
            const Textes r = resultat(fichier("ZEMO_Response.xml"));
            EXPECT_EQ(e.boites(), Textes{"Erreur dans f_MettreAJourIdEtc : Erreur N° 99 |  | " +
                                         (r.size() == 3 ? r[2] : "")})
                << e.erreurs;
        }
    }
}

TEST_F(Unites, AnUnusableDatabaseFailsTheOperationThatNeedsIt) {
    const std::string copie = racine + "/Belvane_Classic/Mag;asin";
    struct Cas {
        std::string operation, base;
        Etat etat;
    };
    std::vector<Cas> table;
    for (Etat e : {Etat::Absente, Etat::Corrompue}) {
        table.push_back({"f_LireCVitale", "Donnees_32.accdb", e});
    }
    for (Etat e : {Etat::Absente, Etat::Vide, Etat::Texte, Etat::Corrompue, Etat::Dossier,
                   Etat::PointVirgule, Etat::LectureSeule, Etat::Verrouillee}) {
        table.push_back({"f_LireCPS", "SV140.accdb", e});
    }
    for (const Cas& c : table) {
        SCOPED_TRACE(c.operation + ", " + c.base + " " + decrire(c.etat));
        garnir();
        const bool ailleurs = c.etat == Etat::PointVirgule;
        const std::string dossier = ailleurs ? copie : magasin;
        if (ailleurs) {
            fs::copy(magasin, copie, fs::copy_options::recursive);
        }
        const std::string base = dossier + "/" + c.base;
        const auto p = passer(c.operation, dossier, base, c.etat,
                              {dossier + "/SV140.accdb", dossier + "/Donnees_32.accdb"});
        fs::remove_all(copie);
        if (!p) {
            continue;
        }
        ASSERT_TRUE(fin_propre(p->execution));
        EXPECT_EQ(p->apres, p->avant) << "written, or created where it was missing";
        EXPECT_TRUE(non_enregistre(c.operation, base));
        // The log names a database it could not open; one it opened, the failing statement.
        const bool ouverte = c.etat == Etat::LectureSeule || c.etat == Etat::Verrouillee ||
                             c.etat == Etat::Corrompue;
        EXPECT_TRUE(journalise({chemin_du_pont(base)}) || (ouverte && journalise({"Erreur SQL"})))
            << log();
    }
}

TEST_F(Unites, ADatabaseTheOperationDoesNotNeedNeverChangesItsAnswer) {
    struct Cas {
        std::string operation, base;
        Etat etat;
    };
    for (const Cas& c : {Cas{"f_LireVersion", hote(), Etat::Absente},
                         Cas{"f_LireVersion", hote(), Etat::Corrompue},
                         Cas{"f_LireCPS", temporaire(), Etat::Absente},
                         Cas{"f_LireCPS", temporaire(), Etat::Corrompue}}) {
        SCOPED_TRACE(c.operation + ", " + fs::path(c.base).filename().string() + " " +
                     decrire(c.etat));
        garnir();
        sql(pont(), "DELETE FROM T_InfosVersion");
        const auto p = passer(c.operation, magasin, c.base, c.etat, {c.base});
        ASSERT_TRUE(p);
        ASSERT_TRUE(fin_propre(p->execution));
        EXPECT_EQ(p->apres, p->avant) << "written, or created where it was missing";
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{c.operation, "0", ""}));
        if (c.etat == Etat::Absente) {
            EXPECT_TRUE(journalise({chemin_du_pont(c.base)})) << log();
        }
        if (c.operation == "f_LireVersion") {
            EXPECT_EQ(versions(), Lignes{version_stockee("4.4")});
        } else {
            EXPECT_EQ(sql(pont(),
                          "SELECT Info_CPS_NUM_IDN, Info_CPS_NOM_PRAT FROM T_InfosCPS;"
                          " SELECT CAST(InfoSituation_CPS_NUM_SIT AS INTEGER),"
                          " InfoSituation_NUM_IDFACPS FROM T_InfosSituation_CPS"
                          " ORDER BY InfoSituation_CPS_ID"),
                      (Lignes{{"10009999999", "NOUVEAU"}, {"1", "11111111"}, {"2", "11111112"}}));
            // Every commit survives a killed run, and many small ones stay cheap.
            EXPECT_EQ(sql(pont(), "PRAGMA journal_mode"), Lignes{{"wal"}});
        }
    }
}

}  // namespace
}  // namespace bb
