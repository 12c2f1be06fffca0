#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "aide_test.h"
#include "platform/xml.h"

// Both builds (libxml2 on Linux, MSXML under Windows) must give these answers: the
// host and the middleware see the same texts and the same bytes whichever runs.
namespace sv140 {
namespace {

const std::string kDeclaration = "<?xml version='1.0' encoding='ISO-8859-1'?>\n";

TEST(Xml, DocumentsReadAndSavedAlike) {
    const struct {
        const char* cas;
        std::string entree;
        std::vector<std::pair<std::string, std::string>> textes;  // XPath, text
        std::string enregistre;                                   // after the declaration
    } cas[] = {
        {"ISO-8859-1 declared",
         "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<R><a>  Zo\xe9  </a></R>",
         {{"/R/a", "Zoé"}},
         "<R><a>  Zo\xe9  </a></R>\n"},
        {"UTF-8 undeclared, beyond Latin-1",
         "<R><a>Zoé € Ω</a></R>",
         {{"/R/a", "Zoé € Ω"}},
         "<R><a>Zo\xe9 &#8364; &#937;</a></R>\n"},
        {"UTF-8 declared",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?><R>Lefèvre</R>",
         {{"/R", "Lefèvre"}},
         "<R>Lef\xe8vre</R>\n"},
        {"white space",
         "<R>\n  <a>\t x  y \r\n</a>\n  <b> </b>\n</R>",
         {{"/R/a", "x  y"}, {"/R/b", ""}},
         "<R>\n  <a>\t x  y \n</a>\n  <b> </b>\n</R>\n"},
        {"CDATA",
         "<R><b><![CDATA[x<y & z]]></b><c>a<![CDATA[ b ]]>c</c></R>",
         {{"/R/b", "x<y & z"}, {"/R/c", "a b c"}, {"/R/c/text()[2]", ""}},
         "<R><b>x&lt;y &amp; z</b><c>a b c</c></R>\n"},
        {"nested text, comment",
         "<R><c>d<e>e<f>f</f></e>g<!-- h --></c></R>",
         {{"/R/c", "defg"}, {"/R/c/e", "ef"}},
         "<R><c>d<e>e<f>f</f></e>g<!-- h --></c></R>\n"},
        {"middleware answer",
         "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<!DOCTYPE ZRMESSAGE>\n"
         "<ZRMESSAGE><resultat><codeErreur>0</codeErreur></resultat></ZRMESSAGE>\n",
         {{"/ZRMESSAGE/resultat/codeErreur", "0"}},
         "<!DOCTYPE ZRMESSAGE>\n"
         "<ZRMESSAGE><resultat><codeErreur>0</codeErreur></resultat></ZRMESSAGE>\n"},
        {"empty elements, attribute",
         "<R><v/><w></w><x a='1 &amp; &quot;2&quot; &lt;'/></R>",
         {{"/R/v", ""}, {"/R/w", ""}, {"/R/x/@a", "1 & \"2\" <"}, {"/R/absent", ""}},
         "<R><v/><w/><x a=\"1 &amp; &quot;2&quot; &lt;\"/></R>\n"},
    };
    for (const auto& c : cas) {
        SCOPED_TRACE(c.cas);
        XmlDocument doc;
        ASSERT_TRUE(doc.charger_texte(c.entree)) << doc.erreur();
        for (const auto& [xpath, attendu] : c.textes) {
            EXPECT_EQ(doc.racine().texte_de(xpath), attendu) << xpath;
        }
        EXPECT_EQ(doc.octets(), kDeclaration + c.enregistre);
    }
}

TEST(Xml, NotWellFormedIsRefusedWithItsLine) {
    // Where an error lies is the parser's own reading: only the plainest is pinned.
    const struct {
        std::string entree;
        const char* ligne;
    } cas[] = {{"<R>\n<a></b></R>", "ligne 2 : "},
               {"<R>\n<a>\n", "ligne "},
               {"<R/>\n<S/>", "ligne "},
               {"", "ligne 1 : "},
               {"<R>Zo\xe9</R>", "ligne "}};  // neither UTF-8 nor declared
    for (const auto& c : cas) {
        XmlDocument doc;
        EXPECT_FALSE(doc.charger_texte(c.entree)) << c.entree;
        EXPECT_EQ(doc.erreur().rfind(std::string("document mal formé, ") + c.ligne, 0), 0u)
            << c.entree << ": " << doc.erreur();
        EXPECT_FALSE(doc.racine());
    }
    XmlDocument doc;
    EXPECT_FALSE(doc.charger_fichier("absent.xml"));
    EXPECT_NE(doc.erreur().find("absent.xml"), std::string::npos);
}

// A document that declares entities is never read, whatever its encoding or where the
// declaration hides; the same words elsewhere are only text.
TEST(Xml, DeclaredEntitiesAreRefused) {
    const auto utf16le = [](std::string_view ascii) {
        std::string s = "\xff\xfe";
        for (char c : ascii) {
            s += c;
            s += '\0';
        }
        return s;
    };
    const struct {
        std::string entree;
        bool refuse;
    } cas[] = {
        {"<!DOCTYPE ZRMESSAGE><ZRMESSAGE>&amp;</ZRMESSAGE>", false},
        {"<!DOCTYPE R [<!ENTITY n \"NOM\">]><R>&n;</R>", true},
        {"<!DOCTYPE R [<!ELEMENT R ANY><!-- x ' --><?pi ' ?><!ENTITY % p \"x\">]><R/>", true},
        {"<!DOCTYPE R [<!-- <!ENTITY n \"x\"> --><!ATTLIST R a CDATA \"<!ENTITY\">]><R/>", false},
        {"<!DOCTYPE R SYSTEM \"<!ENTITY\"><R/>", false},
        {"<R>&lt;!DOCTYPE R [&lt;!ENTITY</R>", false},
        {utf16le("<!DOCTYPE R [<!ENTITY n \"x\">]><R>&n;</R>"), true},
    };
    for (const auto& c : cas) {
        SCOPED_TRACE(c.entree);
        XmlDocument doc;
        const bool lu = doc.charger_texte(c.entree);
        EXPECT_EQ(!lu && doc.erreur() == xml_commun::kRefusEntites, c.refuse) << doc.erreur();
    }
}

TEST(Xml, TextsWrittenThenReadBack) {
    // Whatever a database or a command line holds, the document stays readable: bytes
    // that are not UTF-8 are the host's Windows-1252, forbidden control characters go.
    const struct {
        const char *texte, *enregistre, *relu;
    } cas[] = {
        {"D'ARTAGNAN-LEFÈVRE <&> \"Zaza\"", "<v>D'ARTAGNAN-LEF\xc8VRE &lt;&amp;&gt; \"Zaza\"</v>",
         "D'ARTAGNAN-LEFÈVRE <&> \"Zaza\""},
        {"f_\x01Zo\xe9 \x80", "<v>f_Zo\xe9 &#8364;</v>", "f_Zoé €"},
        {"a\r\nb\tc ‰", "<v>a&#13;\nb\tc &#8240;</v>", "a\r\nb\tc ‰"},
        {"", "<v/>", ""},
    };
    test::DossierTemporaire dossier;
    for (const auto& c : cas) {
        XmlDocument doc;
        XmlNoeud racine = doc.creer_racine("ZRMESSAGE");
        racine.ajouter("v", c.texte);
        // Replaced content is text, never markup.
        racine.ajouter("w", "avant").ajouter("x");
        racine.selectionner_un("w").definir_texte("<x/>");
        ASSERT_TRUE(doc.enregistrer(dossier / "r.xml"));
        EXPECT_EQ(test::lire(dossier / "r.xml"),
                  kDeclaration + "<ZRMESSAGE>" + c.enregistre + "<w>&lt;x/&gt;</w></ZRMESSAGE>\n");
        XmlDocument relu;
        ASSERT_TRUE(relu.charger_fichier(dossier / "r.xml")) << relu.erreur();
        EXPECT_EQ(relu.racine().nom(), "ZRMESSAGE");
        EXPECT_EQ(relu.selectionner_un("/ZRMESSAGE/v").texte(), c.relu);
    }
}

TEST(Xml, Selection) {
    XmlDocument doc;
    ASSERT_TRUE(doc.charger_texte(
        "<R><B><v>1</v><v>2</v></B><B><v>3</v></B>"
        "<C><N>1'2</N></C><C><N>a\"b</N></C><C><N>x'y\"z</N></C><C><N>ok</N></C></R>"));
    auto b = doc.selectionner("/R/B");
    ASSERT_EQ(b.size(), 2u);
    auto v = b[0].selectionner("v");
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v[1].texte(), "2");
    EXPECT_EQ(v[1].nom(), "v");
    EXPECT_EQ(b[1].texte_de("v"), "3");
    EXPECT_EQ(b[1].texte_de("/R/B/v"), "1");
    EXPECT_FALSE(b[1].selectionner_un("w"));
    EXPECT_TRUE(doc.selectionner("/R/B[").empty());
    EXPECT_EQ(doc.racine().texte_de("/R/B["), "");

    // No value breaks out of its XPath literal.
    for (const char* valeur : {"1'2", "a\"b", "x'y\"z", "ok"}) {
        auto noeuds = doc.selectionner("/R/C[N=" + xpath_litteral(valeur) + "]");
        ASSERT_EQ(noeuds.size(), 1u) << valeur;
        EXPECT_EQ(noeuds[0].texte_de("N"), valeur);
    }
    EXPECT_TRUE(doc.selectionner("/R/C[N=" + xpath_litteral("' or '1'='1") + "]").empty());
}

TEST(Xml, AFieldIsTheFirstNodeOfItsPathInDocumentOrder) {
    XmlDocument doc;
    ASSERT_TRUE(
        doc.charger_texte("<R><a/><a><x>0</x><b>1</b></a><a><b>2</b></a>"
                          "<p:c xmlns:p='u'>3</p:c><d-1><e.f>4</e.f></d-1></R>"));
    const std::pair<const char*, const char*> cas[] = {
        {"a/b", "1"},     {"a", ""},          {"b", ""},       {"c", ""},
        {"d-1/e.f", "4"}, {"a/b | a/x", "0"}, {"a[3]/b", "2"}, {"//b", "1"},
    };
    for (const auto& [chemin, attendu] : cas) {
        EXPECT_EQ(doc.racine().texte_de(chemin), attendu) << chemin;
        EXPECT_EQ(doc.racine().selectionner_un(chemin).texte(), attendu) << chemin;
    }
}

}  // namespace
}  // namespace sv140
