#include "exchange/document.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace sv140 {
namespace {

TEST(Document, AGroupIsReadFromItsLastNode) {
    XmlDocument doc;
    ASSERT_TRUE(
        doc.charger_texte("<R><g><a>1</a><b><c>2</c></b></g><g><a>3</a></g><h><a>4</a></h></R>"));
    Champs champs{"a", "b/c"};
    EXPECT_EQ(champs.lire(doc, "/R/g"), 2u);
    EXPECT_EQ(champs("a") + "|" + champs("b/c"), "3|") << "the last node's values stand whole";
    EXPECT_EQ(champs.lire(doc, "/R/absent"), 0u);
    EXPECT_EQ(champs("a"), "3") << "no node: the fields keep what they held";
    // Reading a field nobody asked for is the routine's mistake, never a silent "".
    EXPECT_THROW(champs("c"), std::logic_error);
}

}  // namespace
}  // namespace sv140
