#include "textmarkup_htmlwriter.h"

#include <gtest/gtest.h>

namespace {

using textmarkup::HtmlWriter;

TEST(HtmlWriter, WritesTagsAndEscapesTexts) {
    HtmlWriter writer;
    writer.doctype();
    writer.open("html", {{"lang", "en"}, {"LANG", "de"}, {"1 on", "\"'<>&\n"}});
    writer.element("p", "<b>&amp;\r\x01\xFF");
    writer.element("br", "void");
    writer.element("pre", "\n1");
    writer.comment("--!> <!-- --> -");
    EXPECT_EQ(writer.finish(), "<!DOCTYPE html>\n<html lang=\"en\" "
                               "x1_on=\"&quot;&apos;&lt;&gt;&amp;&#10;\">"
                               "<p>&lt;b&gt;&amp;amp;&#13;\uFFFD\uFFFD</p><br><pre>\n\n1</pre>"
                               "<!-- - -!> <!- - - -> - --></html>");
}

TEST(HtmlWriter, KeepsCodeInItsElement) {
    HtmlWriter writer;
    writer.element("script", "a < b && '</Script><!--<script></style>\xFF'");
    writer.element("STYLE", "'</style></script>'");
    EXPECT_EQ(writer.finish(),
              "<script>a < b && '<\\/Script><\\!--<\\script></style>\uFFFD'</script>"
              "<style>'<\\/style></script>'</style>");
}

} // namespace
