#include <gtest/gtest.h>

#include "aide_test.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

TEST(Xml, TextAndSelection) {
    XmlDocument doc;
    ASSERT_TRUE(
        doc.charger_texte("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                          "<R><a>  Zo\xe9  </a><b><![CDATA[x<y]]></b><c>d<e>e</e>f</c><vide/>"
                          "<B><v>1</v><v>2</v></B><B><v>3</v></B></R>"));
    const struct {
        const char *chemin, *attendu;
    } cas[] = {
        {"/R/a", "Zoé"}, {"/R/b", "x<y"}, {"/R/c", "def"}, {"/R/vide", ""}, {"/R/absent", ""}};
    for (const auto& c : cas) {
        EXPECT_EQ(doc.racine().texte_de(c.chemin), c.attendu) << c.chemin;
    }
    auto b = doc.selectionner("/R/B");
    ASSERT_EQ(b.size(), 2u);
    auto v = b[0].selectionner("v");
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v[1].texte(), "2");
    EXPECT_EQ(b[1].texte_de("v"), "3");
    EXPECT_TRUE(doc.selectionner("/R/B[").empty());
}

TEST(Xml, SavedInLatin1WithItsDeclaration) {
    test::DossierTemporaire dossier;
    XmlDocument doc;
    doc.creer_racine("ZRMESSAGE").ajouter("nom", "D'ARTAGNAN-LEFÈVRE <&> \"Zaza\"");
    ASSERT_TRUE(doc.enregistrer(dossier / "r.xml"));
    std::string octets = test::lire(dossier / "r.xml");
    EXPECT_EQ(octets.rfind("<?xml version='1.0' encoding='ISO-8859-1'?>\n<ZRMESSAGE>", 0), 0u);
    EXPECT_NE(octets.find("LEF\xc8VRE"), std::string::npos);
    XmlDocument relu;
    ASSERT_TRUE(relu.charger_fichier(dossier / "r.xml"));
    EXPECT_EQ(relu.racine().texte_de("nom"), "D'ARTAGNAN-LEFÈVRE <&> \"Zaza\"");

    // Whatever a database or a command line holds, the document stays readable: bytes
    // that are not UTF-8 are the host's Windows-1252, forbidden control characters go.
    XmlDocument brut;
    brut.creer_racine("ZRMESSAGE").ajouter("appelant", "f_\x01Zo\xe9 \x80");
    ASSERT_TRUE(brut.enregistrer(dossier / "brut.xml"));
    ASSERT_TRUE(relu.charger_fichier(dossier / "brut.xml")) << relu.erreur();
    EXPECT_EQ(relu.racine().texte_de("appelant"), "f_Zoé €");
}

TEST(Xml, XPathLiteralsKeepTheWholeValue) {
    XmlDocument doc;
    ASSERT_TRUE(doc.charger_texte(
        "<R><B><N>1'2</N></B><B><N>a\"b</N></B><B><N>x'y\"z</N></B><B><N>ok</N></B></R>"));
    for (const char* valeur : {"1'2", "a\"b", "x'y\"z", "ok"}) {
        auto noeuds = doc.selectionner("/R/B[N=" + xpath_litteral(valeur) + "]");
        ASSERT_EQ(noeuds.size(), 1u) << valeur;
        EXPECT_EQ(noeuds[0].texte_de("N"), valeur);
    }
    EXPECT_TRUE(doc.selectionner("/R/B[N=" + xpath_litteral("' or '1'='1") + "]").empty());
}

}  // namespace
}  // namespace sv140
