// What the start of a run, the exchange, the card operations and the complementary
// query do with what the shop and the middleware hand them damaged: a missing,
// unreadable or oversized document, a database that cannot be used, and field texts
// made to break out of SQL, XPath, a path or a log line. The host always finds an
// answer saying why, the log names the cause, and the databases stay as they were.
#include <algorithm>
#include <cstdint>
#include <filesystem>

#include "degats.h"
#include "harnais.h"
#include "platform/encodage.h"

namespace bb {
namespace {

namespace fs = std::filesystem;

const std::string kClient = "57, '150017512345642', '1975-05-12 00:00:00', 1, NULL";
const std::string kIllisible = "Impossible de lire ZEMO_SvResponse.xml";
const std::string kNonEnregistre = "Les données n'ont pas été enregistrées : ";

// A text as an ISO-8859-1 document carries it: markup escaped, every letter beyond
// ASCII as a character reference. A NUL stays a NUL byte.
std::string echappe(const std::string& utf8) {
    std::string r;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x80) {
            r += c == '&'   ? "&amp;"
                 : c == '<' ? "&lt;"
                 : c == '>' ? "&gt;"
                            : std::string(1, utf8[i]);
            ++i;
            continue;
        }
        const int n = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
        std::uint32_t point = c & (0xFF >> (n + 1));
        for (int k = 1; k < n; ++k) {
            point = (point << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        }
        r += "&#" + std::to_string(point) + ";";
        i += n;
    }
    return r;
}

// A middleware answer with its XML declaration in place of the DOCTYPE line, as the
// damage kinds expect a document to start.
std::string declare(const std::string& reponse) {
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
           reponse.substr(reponse.find("<ZRMESSAGE>"));
}

std::string reponse_cps(const std::string& nom, const std::string& situations) {
    return reponse("f_LireCPS", "0", "",
                   "<contextePS><NUM_IDN>10009999999</NUM_IDN><NOM_PRAT>" + nom + "</NOM_PRAT>" +
                       situations + "</contextePS>");
}

std::string situation(int numero, const std::string& texte) {
    return "<situation><NUM_SIT>" + std::to_string(numero) + "</NUM_SIT><NUM_IDS>" + texte +
           "</NUM_IDS><RAIS_STR>" + texte + "</RAIS_STR></situation>";
}

std::string requete_complementaire(const Textes& valeurs) {
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><BelvaneClassicII><beneficiaire>"
           "<codeRegime>" +
           valeurs[0] + "</codeRegime><codeCaisse>" + valeurs[1] + "</codeCaisse><codeCentre>" +
           valeurs[2] + "</codeCentre></beneficiaire><donneesTP><numeroMutuelle>" + valeurs[3] +
           "</numeroMutuelle></donneesTP></BelvaneClassicII>";
}

// A text as an SQL literal for the harness's own statements.
std::string litteral(const std::string& texte) {
    std::string r = "'";
    for (char c : texte) {
        r += c == '\'' ? "''" : std::string(1, c);
    }
    return r + "'";
}

// The hostile texts an XML document can carry: all but the one holding a NUL. Under
// Wine, where the SQLite driver has only narrow entry points that squeeze wide text
// into Latin-1 (platform/odbc_texte.h), the texts outside Windows-1252 are left out of
// what reaches a database, the Windows-1252 log or request: a shop's Access driver
// takes them whole.
Textes textes_xml() {
    Textes t;
    for (const std::string& texte : textes_hostiles()) {
        if (texte.find('\0') == std::string::npos &&
            !(sous_wine() && sv140::utf8_vers_cp1252(texte).find('?') != std::string::npos)) {
            t.push_back(texte);
        }
    }
    return t;
}

std::string joindre(const Textes& mots) {
    std::string s;
    for (const auto& m : mots) {
        s += (s.empty() ? "" : " ") + m;
    }
    return s;
}

using EntreesCartes = BoiteNoire;

TEST_F(EntreesCartes, ADamagedMiddlewareAnswerIsAnsweredAndStoresNothing) {
    struct Cas {
        std::string operation;
        std::string valide;    // the answer it would have stored
        std::string appelant;  // whom the host is told could not be read
    };
    const std::string carte = reponse_carte({beneficiaire("DUPONT", "Jean", "19750512", "1")});
    const std::vector<Cas> cas = {
        {"f_LireCVitale", carte, "f_LireCVitale"},
        {"f_LireCPS", reponse_cps("NOUVEAU", situation(3, "S")), "f_LireCPS"},
        // The host has always been told about the professional card here.
        {"f_LireVersion", reponse_version("2.0"), "f_LireCPS"},
        {"f_InitialisationPS", reponse("f_InitialisationPS", "0", ""), "f_InitialisationPS"},
        {"f_MaJVersion", reponse("f_MaJVersion", "0", ""), "f_MaJVersion"},
        {"f_MettreAJourCV", reponse("f_MettreAJourCV", "0", ""), "f_MettreAJourCV"},
        {"f_LireInfosComplementaire", reponse("f_LireInfosComplementaire", "0", ""),
         "f_LireInfosComplementaire"},
    };
    professionnel();
    ecrire(fichier("ZEMO_Request.xml"), requete_complementaire({"01", "131", "1234", "12345678"}));
    sql(hote(), "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('earlier')");
    const Lignes avant = instantane({pont(), hote()});
    // The middleware leaves nothing in the buffer ("missing" and "empty" are one case
    // here), or a document it cut, mis-encoded, declaring an entity, or cut by the
    // buffer's size (100 MB: once, the answer is the same to every operation).
    std::vector<std::pair<std::string, std::string>> abimes;
    for (const Cas& c : cas) {
        for (DocumentAbime d : {DocumentAbime::Vide, DocumentAbime::Malforme,
                                DocumentAbime::MalEncode, DocumentAbime::Entite}) {
            abimes.emplace_back(nom(d), *abimer(d, declare(c.valide)));
        }
        // A NUL inside a field cuts the answer there.
        abimes.emplace_back("NUL in a field",
                            reponse(c.operation, "0", std::string("avant\0apr\xE8s", 10)));
    }
    for (std::size_t i = 0; i < abimes.size(); ++i) {
        const Cas& c = cas[i / 5];
        SCOPED_TRACE(c.operation + ", answer " + abimes[i].first);
        utiliser_script();
        scripter(1, abimes[i].second);
        Execution e = operation(c.operation);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{c.appelant, "99", kIllisible}));
        EXPECT_NE(log().find("Réponse illisible : "), std::string::npos) << log();
        EXPECT_EQ(instantane({pont(), hote()}), avant);
        // Neither the card update's success box nor the complementary copies.
        EXPECT_EQ(e.boites(), Textes{}) << e.erreurs;
        EXPECT_FALSE(existe(fichier("ZEMO_SvResponseAMC.xml")));
    }
    // 100 MB: the middleware fills the buffer the shop's settings give.
    utiliser_script();
    scripter(1, *abimer(DocumentAbime::Enorme, declare(cas[1].valide)));
    ASSERT_TRUE(fin_propre(operation("f_LireCPS")));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{"f_LireCPS", "99", kIllisible}));
    EXPECT_EQ(instantane({pont(), hote()}), avant);
}

TEST_F(EntreesCartes, TheCardAnswerTheLinkReadsMayBeDamagedOrHuge) {
    // f_MettreAJourIdEtc asks nothing of the middleware: it reads the answer the card
    // reading left, whatever became of it since.
    professionnel();
    client(kClient);
    const std::string carte =
        declare(reponse_carte({beneficiaire("DUPONT", "Jean", "19750512", "1")}));
    const Lignes avant = instantane({pont(), hote()});
    for (DocumentAbime d : kDocumentsAbimes) {
        SCOPED_TRACE(nom(d));
        utiliser_script();
        std::remove(fichier("ZEMO_SvResponse.xml").c_str());
        if (auto octets = abimer(d, carte)) {
            ecrire(fichier("ZEMO_SvResponse.xml"), *octets);
        }
        Execution e = operation("f_MettreAJourIdEtc");
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(appels(), 0);
        if (d == DocumentAbime::Enorme) {
            EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{"f_LireCVitale", "0", ""}));
            EXPECT_EQ(sql(pont(), "SELECT Info_ETC_ID_FK, Info_CV_NOM_USG FROM T_InfosCarteVitale"),
                      (Lignes{{"57", "DUPONT"}}));
            continue;
        }
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
                  (Textes{"f_LireCVitale", "99", kIllisible}));
        EXPECT_EQ(e.boites(),
                  Textes{"Erreur dans f_MettreAJourIdEtc : Erreur N° 99 |  | " + kIllisible})
            << e.erreurs;
        EXPECT_NE(log().find("ZEMO_SvResponse.xml illisible : "), std::string::npos) << log();
        EXPECT_EQ(instantane({pont(), hote()}), avant);
    }
}

TEST_F(EntreesCartes, ADatabaseThatCannotBeUsedFailsTheOperationWholly) {
    // What the unit-of-work tests leave out: f_LireCPS meets every kind there, and the
    // missing columns of the card tables too.
    struct Cas {
        std::string operation;
        bool pont;                      // else the host's database
        std::string table, colonne;     // no column: not dropped here
        bool verrou;                    // a locked database costs the 5 seconds waited: once
        bool ecrite;                    // else only read, which a read-only file allows
        std::string appelant, libelle;  // the answer, when not the operation's own 99
    };
    const std::string carte = reponse_carte({beneficiaire("DUPONT", "Jean", "19750512", "1")});
    professionnel();
    client(kClient);
    ecrire(fichier("ZEMO_Request.xml"), requete_complementaire({"01", "131", "1234", "12345678"}));
    const std::vector<Cas> cas = {
        {"f_LireVersion", true, "T_InfosVersion", "Info_Version_crcAppli", false, true, "", ""},
        {"f_LireCVitale", false, "", "", true, true, "", ""},
        {"f_MettreAJourIdEtc", true, "", "", false, true, "", ""},
        {"f_MettreAJourIdEtc", false, "T_Etat_Civil", "Divers", false, false, "", ""},
        // Without the professional's data no query is built.
        {"f_LireInfosComplementaire", true, "T_InfosCPS", "Info_CPS_NUM_IDN", false, false,
         "f_InitialisationPS", "Les données de la CPS n'ont pu être lues"},
    };
    for (const Cas& c : cas) {
        const std::string base = c.pont ? pont() : hote(), autre = c.pont ? hote() : pont();
        for (BaseAbimee b : kBasesAbimees) {
            if ((b == BaseAbimee::Verrouillee && !c.verrou) ||
                (b == BaseAbimee::ColonneManquante && c.colonne.empty()) ||
                (b == BaseAbimee::LectureSeule && !c.ecrite)) {
                continue;
            }
            SCOPED_TRACE(c.operation + " with " + base + " " + nom(b));
            utiliser_script();
            scripter(1, c.operation == "f_LireVersion" ? reponse_version("2.0") : carte);
            ecrire(fichier("ZEMO_SvResponse.xml"), carte);
            const Lignes avant = instantane({pont(), hote()});
            {
                Degat degat(b, base, c.table, c.colonne);
                if (!degat.pris()) {
                    continue;
                }
                // This process may not open a database another workstation holds.
                const Textes lisibles =
                    b == BaseAbimee::Verrouillee ? Textes{autre} : Textes{pont(), hote()};
                const Lignes pendant = instantane(lisibles);
                horloge_figee = b != BaseAbimee::Verrouillee;  // the wait must see time pass
                ASSERT_TRUE(fin_propre(operation(c.operation)));
                horloge_figee = true;
                EXPECT_EQ(instantane(lisibles), pendant);
            }
            EXPECT_EQ(instantane({pont(), hote()}), avant);
            const Textes r = resultat(fichier("ZEMO_Response.xml"));
            ASSERT_EQ(r.size(), 3u) << "no well-formed answer";
            if (!c.libelle.empty()) {
                // Nor may the success the run before left stand for this one.
                EXPECT_EQ(r, (Textes{c.appelant, "99", c.libelle}));
                EXPECT_EQ(appels(), 0);
                EXPECT_FALSE(existe(fichier("ZEMO_SvResponseAMC.xml")));
                continue;
            }
            EXPECT_EQ(r[1], "99");
            EXPECT_TRUE(r[2].starts_with(kNonEnregistre + chemin_du_pont(base))) << r[2];
            EXPECT_NE(
                log().find(b == BaseAbimee::ColonneManquante ? c.colonne : chemin_du_pont(base)),
                std::string::npos)
                << log();
        }
    }
}

TEST_F(EntreesCartes, HostileCardTextsAreStoredAsTheyCame) {
    const Textes textes = textes_xml();
    professionnel();

    // f_LireCVitale: one beneficiary per text, in its name and first name.
    std::vector<Champs> beneficiaires;
    Lignes attendu;
    for (std::size_t i = 0; i < textes.size(); ++i) {
        beneficiaires.push_back(beneficiaire(echappe(textes[i]), echappe(textes[i]), "19750512",
                                             std::to_string(i + 1)));
        // The host's name column takes 50 characters.
        attendu.push_back({stocke(textes[i].size() == 10000 ? textes[i].substr(0, 50) : textes[i]),
                           stocke(textes[i])});
    }
    utiliser_script();
    scripter(1, reponse_carte(beneficiaires));
    ASSERT_TRUE(fin_propre(operation("f_LireCVitale")));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{"f_LireCVitale", "0", ""}));
    EXPECT_EQ(sql(hote(),
                  "SELECT [Nom du Verre], Couleur FROM [Sélection Verres]"
                  " ORDER BY [Plage-Mini]"),
              attendu);

    // f_LireCPS: one situation per text, and the professional's name.
    std::string situations;
    attendu.clear();
    for (std::size_t i = 0; i < textes.size(); ++i) {
        situations += situation(static_cast<int>(i + 1), echappe(textes[i]));
        // The company name as the host keeps it: no apostrophe, 30 characters.
        std::string raison =
            textes[i].substr(0, textes[i].size() == 10000 ? 30 : std::string::npos);
        std::replace(raison.begin(), raison.end(), '\'', ' ');
        attendu.push_back({textes[i], raison});
    }
    utiliser_script();
    scripter(1, reponse_cps(echappe(textes[7]), situations));
    ASSERT_TRUE(fin_propre(operation("f_LireCPS")));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{"f_LireCPS", "0", ""}));
    EXPECT_EQ(sql(pont(), "SELECT Info_CPS_NOM_PRAT FROM T_InfosCPS"), Lignes{{textes[7]}});
    EXPECT_EQ(sql(pont(),
                  "SELECT InfoSituation_CPS_NUM_IDS, InfoSituation_RAIS_STR"
                  " FROM T_InfosSituation_CPS ORDER BY InfoSituation_CPS_ID"),
              attendu);

    // f_LireVersion: one text per field.
    const Textes elements = {
        "versionDll", "versionCDC", "versionReferentiel", "constructeur", "typeLecteur",
        "numSerie",   "typeOS",     "nomAppli",           "numVersion",   "dateAppli"};
    std::string tete, lecteur, appli;
    Textes ligne{"1"};
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const std::string& t = textes[i % textes.size()];
        (i < 3   ? tete
         : i < 7 ? lecteur
                 : appli) += "<" + elements[i] + ">" + echappe(t) + "</" + elements[i] + ">";
        ligne.push_back(t);
    }
    ligne.insert(ligne.end(), {"", ""});  // heureAppli, crcAppli
    utiliser_script();
    scripter(1, reponse("f_LireVersion", "0", "",
                        "<donneesVersion>" + tete + "<infosLecteur>" + lecteur + "<appliSV>" +
                            appli + "</appliSV></infosLecteur></donneesVersion>"));
    ASSERT_TRUE(fin_propre(operation("f_LireVersion")));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{"f_LireVersion", "0", ""}));
    EXPECT_EQ(versions(), Lignes{ligne});

    // f_MettreAJourIdEtc: the client's birth rank chooses the beneficiary through XPath;
    // the card's texts go to SQL.
    for (const std::string& t : textes) {
        SCOPED_TRACE(t.substr(0, 40));
        client("57, '150017512345642', '1975-05-12 00:00:00', " + litteral(t) + ", NULL");
        sql(pont(), "DELETE FROM T_InfosCarteVitale");
        Champs choisi = beneficiaire(echappe(t), "Jean", "19750512", echappe(t));
        for (auto& [chemin, valeur] : choisi) {
            valeur = chemin == "ADR_LN1" ? echappe(t) : valeur;
        }
        ecrire(fichier("ZEMO_SvResponse.xml"),
               reponse_carte({beneficiaire("AUTRE", "Paul", "19750512", "2"), choisi}));
        ASSERT_TRUE(fin_propre(operation("f_MettreAJourIdEtc")));
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), (Textes{"f_LireCVitale", "0", ""}));
        EXPECT_EQ(sql(pont(),
                      "SELECT Info_CV_BEN_RNG, Info_CV_NOM_USG, Info_CV_ADR_LN1"
                      " FROM T_InfosCarteVitale"),
                  (Lignes{{t, stocke(t), stocke(t)}}));
    }
}

TEST_F(EntreesCartes, TheComplementaryQuerySendsWhatTheHostWroteOrNothing) {
    professionnel();
    const std::string valide = requete_complementaire({"01", "131", "1234", "12345678"});
    const auto envoye = [this] {
        return xml(script("requete_1.xml"), "//donneesComplementaire/*");
    };
    std::vector<std::pair<std::string, std::optional<std::string>>> documents;
    for (DocumentAbime d : kDocumentsAbimes) {
        documents.emplace_back(nom(d), abimer(d, valide));
    }
    documents.emplace_back("NUL in a field", requete_complementaire({"01",
                                                                     std::string("1\0"
                                                                                 "31",
                                                                                 4),
                                                                     "1234", "1"}));
    for (const auto& [nom_document, octets] : documents) {
        SCOPED_TRACE(nom_document);
        utiliser_script();
        scripter(1, reponse("f_LireInfosComplementaire", "0", ""));
        for (const char* f :
             {"ZEMO_Request.xml", "ZEMO_SvRequestAMC.xml", "ZEMO_SvResponseAMC.xml"}) {
            std::remove(fichier(f).c_str());
        }
        if (octets) {
            ecrire(fichier("ZEMO_Request.xml"), *octets);
        }
        ASSERT_TRUE(fin_propre(operation("f_LireInfosComplementaire")));
        if (nom_document == nom(DocumentAbime::Enorme)) {
            EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
                      (Textes{"f_LireInfosComplementaire", "0", ""}));
            EXPECT_EQ(envoye(), (Textes{"12345678", "01", "131", "1234"}));
            EXPECT_TRUE(existe(fichier("ZEMO_SvResponseAMC.xml")));
            continue;
        }
        EXPECT_EQ(appels(), 0);
        EXPECT_FALSE(existe(fichier("ZEMO_SvRequestAMC.xml")));
        EXPECT_FALSE(existe(fichier("ZEMO_SvResponseAMC.xml")));
        EXPECT_EQ(
            resultat(fichier("ZEMO_Response.xml")),
            (Textes{"f_LireInfosComplementaire", "99", "Impossible de lire ZEMO_Request.xml"}));
        EXPECT_NE(log().find("ZEMO_Request.xml illisible : "), std::string::npos) << log();
    }
    // Four texts a run, one per field the query sends.
    const Textes textes = textes_xml();
    for (std::size_t i = 0; i < textes.size(); i += 4) {
        Textes t;
        for (std::size_t k = 0; k < 4; ++k) {
            t.push_back(textes[(i + k) % textes.size()]);
        }
        SCOPED_TRACE(joindre(t).substr(0, 80));
        utiliser_script();
        scripter(1, reponse("f_LireInfosComplementaire", "0", ""));
        ecrire(fichier("ZEMO_Request.xml"), requete_complementaire({echappe(t[0]), echappe(t[1]),
                                                                    echappe(t[2]), echappe(t[3])}));
        ASSERT_TRUE(fin_propre(operation("f_LireInfosComplementaire")));
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
                  (Textes{"f_LireInfosComplementaire", "0", ""}));
        EXPECT_EQ(envoye(), (Textes{t[3], t[0], t[1], t[2]}));
    }
}

TEST_F(EntreesCartes, TheCommandLineMayNameNoShopOrAnyOperation) {
    utiliser_script();
    scripter(0, reponse_version("2.0"));
    // A shop folder that does not exist: the databases are not created there.
    const std::string ailleurs = racine + "/nulle_part";
    for (const std::string operation : {"f_LireVersion", "f_LireCVitale"}) {
        SCOPED_TRACE(operation);
        ASSERT_TRUE(fin_propre(lancer({operation, chemin_du_pont(ailleurs)})));
        const Textes r = resultat(fichier("ZEMO_Response.xml"));
        ASSERT_EQ(r.size(), 3u) << "no well-formed answer";
        EXPECT_EQ(r[1], "99");
        EXPECT_TRUE(r[2].starts_with(kNonEnregistre + chemin_du_pont(ailleurs))) << r[2];
        EXPECT_FALSE(existe(ailleurs));
    }

    // The shop folder's name holds the text: the drivers are given its databases' paths.
    // Windows has no file names with '"' or '<'; a name is at most 255 bytes.
    for (std::string t : textes_xml()) {
        if (t.size() > 200 || (sous_wine() && t.find_first_of("\"<") != std::string::npos)) {
            continue;
        }
        std::replace(t.begin(), t.end(), ' ', '_');  // the command line's words have none
        SCOPED_TRACE(t);
        const std::string dossier = magasin + t;
        fs::rename(magasin, dossier);
        sql(dossier + "/SV140.accdb", "DELETE FROM T_InfosVersion");
        const Execution e = lancer({"f_LireVersion", chemin_du_pont(dossier)});
        fs::rename(dossier, magasin);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_TRUE(log_finit_par("DB_sv : " + chemin_du_pont(dossier + "/SV140.accdb"))) << log();
        const Textes r = resultat(fichier("ZEMO_Response.xml"));
        if (t.find(';') != std::string::npos) {
            // No ODBC connection string can hold it.
            ASSERT_EQ(r.size(), 3u);
            EXPECT_EQ(r[1], "99");
            EXPECT_EQ(versions(), Lignes{});
        } else {
            EXPECT_EQ(r, (Textes{"f_LireVersion", "0", ""}));
            EXPECT_EQ(versions(), Lignes{version_stockee("2.0")});
        }
    }

    // An operation no one knows, named by the text: shown whole, nothing asked. Wine
    // is given a word with a blank or a '"' quoted, so its command line is not this one.
    for (const std::string& t : textes_xml()) {
        if (sous_wine() && t.find_first_of(" \"") != std::string::npos) {
            continue;
        }
        SCOPED_TRACE(t.substr(0, 40));
        utiliser_script();
        std::remove(fichier("ZEMO_SvResponse.xml").c_str());
        const Textes args{t, chemin_du_pont(magasin)};
        const Execution e = lancer(args);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(appels(), 0);
        const Textes boites = e.boites();
        ASSERT_FALSE(boites.empty()) << e.erreurs;
        EXPECT_TRUE(boites[0].starts_with("SV140 : " + joindre(args) + " -*- ")) << boites[0];
        EXPECT_TRUE(log_finit_par("Chaine_Command : " + joindre(args))) << log();
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")).size(), 3u) << "no well-formed answer";
    }
}

}  // namespace
}  // namespace bb
