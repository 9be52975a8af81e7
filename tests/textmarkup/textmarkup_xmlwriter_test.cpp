#include "textmarkup_xmlwriter.h"

#include "markup_traces.h"

#include <gtest/gtest.h>

namespace {

using textmarkup::XmlWriter;

TEST(XmlWriter, PutsTagsOnLinesButNotBesideText) {
    XmlWriter writer;
    writer.declaration();
    writer.open("a", {{"x", "1"}, {"y", "\"<'\t\n\r&"}, {"x", "2"}});
    writer.element("b", "text", 6);
    writer.element("c", "<<<", 7);
    writer.open("d");
    writer.text("e");
    writer.element("f", "");
    writer.comment("--->");
    writer.close();
    EXPECT_EQ(writer.finish(), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                               "<a x=\"1\" y=\"&quot;&lt;&apos;&#9;&#10;&#13;&amp;\">\n"
                               "<b>text</b>\n<c>&lt;...</c>\n"
                               "<d>e<f></f><!-- - - -> --></d>\n</a>\n");
    EXPECT_EQ(writer.finish(), "");
}

TEST(XmlWriter, StaysWellFormedWhateverItIsGiven) {
    XmlWriter writer;
    writer.close();
    writer.text("outside");
    writer.open("1é d<", {{"", "\xFF"}, {"-", "\x01"}});
    writer.declaration();
    writer.open("");
    writer.text("]]>\xC3");
    writer.comment("\x02--");
    writer.close();
    writer.close();
    writer.element("second", "root");
    EXPECT_EQ(test::traceXml(writer.finish()),
              "<_é_d_ _=\"\uFFFD\">[\n]<_>[]]>\uFFFD]<!-- \uFFFD- - --></_>[\n]</_é_d_>");
}

} // namespace
