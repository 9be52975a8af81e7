#include "textmarkup_xmlreader.h"

#include "expect_traces.h"
#include "markup_traces.h"

#include <gtest/gtest.h>

namespace {

using textmarkup::Event;
using textmarkup::XmlReader;

TEST(XmlReader, ReadsWhatIsWellFormed) {
    const Traces rows = {
        {"<a/>", "<a></a>"},
        {"\uFEFF<?xml version='1.0' encoding='UTF-8' standalone = \"no\" ?>\n<a > </a >\n",
         "<a>[ ]</a>"},
        {"<?xml version=\"1.17\" encoding='utf-8'?><a/>", "<a></a>"},
        {"<a x='1' y = \"&#x3C;'&quot;\"\n/>", "<a x=\"1\" y=\"<'\"\"></a>"},
        {"<a x=' \t\n\r\n\r&#9;&#10;&#13;'/>", "<a x=\"     \t\n\r\"></a>"},
        {"<a>1<b>2</b>3<c/></a>", "<a>[1]<b>[2]</b>[3]<c></c></a>"},
        {"<a>\r\n\r\r&#13;\n</a>", "<a>[\n\n\n\r\n]</a>"},
        {"<a>x&amp;&lt;&gt;&apos;&quot;&#120;&#x1F600;y</a>", "<a>[x&<>'\"x\U0001F600y]</a>"},
        {"<a>1<![CDATA[<&amp;\r\n]]]]>2<![CDATA[]]></a>", "<a>[1<&amp;\n]]2]</a>"},
        {"<a><![CDATA[]]></a>", "<a></a>"},
        {"<a>]] ]></a>", "<a>[]] ]>]</a>"},
        {"<!----><?p?><a><?p  d ? ?><!-- - <b> --></a><!--\r-->",
         "<!----><?p ?><a><?p d ? ?><!-- - <b> --></a><!--\n-->"},
        {"<Größe·1 _:.-='é'/>", "<Größe·1 _:.-=\"é\"></Größe·1>"},
    };
    expectTraces(test::traceXml, rows);
}

TEST(XmlReader, TellsWhereAndWhyItStops) {
    const Traces rows = {
        {"", "line 1, column 1: the document has no element"},
        {" \n x<a/>", "line 2, column 2: text outside the root element"},
        {"<a/>\r\n\r<b/>", "line 3, column 1: a second element follows the root element"},
        {"<a>\u00E9<b></a>", "line 1, column 8: the element 'b' is closed as 'a'"},
        {"<a>\n", "line 2, column 1: the document ends within the element 'a'"},
        {"</a>", "line 1, column 1: an element is closed that was not opened"},
        {"<a></a x>", "line 1, column 8: the end tag 'a' is malformed here"},
        {"<a><1/></a>", "line 1, column 4: '<' begins no tag"},
        {"<a x='1'y='2'/>", "line 1, column 9: the tag 'a' is malformed here"},
        {"<a / >", "line 1, column 5: the tag 'a' is malformed here"},
        {"<a x='1' x='2'/>", "line 1, column 10: the attribute 'x' is there twice"},
        {"<a x/>", "line 1, column 5: the attribute 'x' has no '='"},
        {"<a x=1/>", "line 1, column 6: the attribute 'x' has no value in quotes"},
        {"<a x='<'/>", "line 1, column 7: the value of 'x' has no closing quote"},
        {"<a>&nbsp;</a>", "line 1, column 4: the entity 'nbsp' is not known"},
        {"<a>a & b;</a>", "line 1, column 6: '&' begins no reference that ends in ';'"},
        {"<a>&#0;</a>", "line 1, column 4: '&#0;' is not a character that XML allows"},
        {"<a>&#X41;</a>", "line 1, column 4: '&#X41;' is not a character that XML allows"},
        {"<a>&#99999999999;</a>",
         "line 1, column 4: '&#99999999999;' is not a character that XML allows"},
        {"<a>]]></a>", "line 1, column 4: ']]>' in a text"},
        {"<a>\x1B</a>", "line 1, column 4: a character that XML does not allow"},
        {"<a>\uFFFF</a>", "line 1, column 4: a character that XML does not allow"},
        {"<a>\xC3(</a>", "line 1, column 4: a byte is not part of UTF-8"},
        {"<a><!-- -- --></a>", "line 1, column 9: '--' within a comment"},
        {"<a><!-- ", "line 1, column 4: a comment does not end"},
        {"<a><![CDATA[ ", "line 1, column 4: a CDATA section does not end"},
        {"<a><?b ", "line 1, column 4: a processing instruction does not end"},
        {"<a/><? b?>", "line 1, column 7: a processing instruction has no target"},
        {" <?xml version='1.0'?><a/>",
         "line 1, column 2: an XML declaration that is not at the very beginning"},
        {"<?xml version='2.0'?><a/>",
         "line 1, column 20: the XML declaration does not begin with a version 1.x"},
        {"<?xml version='1.0' encoding='iso-8859-1'?><a/>",
         "line 1, column 42: the document is in 'iso-8859-1', only UTF-8 is read"},
        {"<?xml version='1.0' standalone='No'?><a/>",
         "line 1, column 36: 'standalone' is neither 'yes' nor 'no'"},
        {"<?xml version='1.0' x='1'?><a/>", "line 1, column 21: the XML declaration is malformed"},
        {std::string("<\0a\0/\0>\0", 8),
         "line 1, column 1: the document is in UTF-16 or UTF-32, and only UTF-8 is read"},
        {"<!DOCTYPE a><a/>",
         "line 1, column 1: the document has a document type, and such are not read"},
        {"<a><!ELEMENT a></a>",
         "line 1, column 4: '<!' begins neither a comment nor a CDATA section"},
    };
    expectTraces(test::traceXml, rows);
}

TEST(XmlReader, KeepsToItsLimits) {
    const textmarkup::Limits limits{.depth = 2, .text = 3, .attributes = 1};
    const Traces rows = {
        {"<a x='123'><b/>123</a>", "<a x=\"123\"><b></b>[123]</a>"},
        {"<a><b><c/></b></a>", "line 1, column 7: more than 2 levels are open"},
        {"<a x='1' y='2'/>", "line 1, column 10: the element 'a' has more than 1 attributes"},
        {"<a x='1234'/>", "line 1, column 1: a text is longer than 3 bytes"},
        {"<a>12&lt;4</a>", "line 1, column 4: a text is longer than 3 bytes"},
        {"<a><!--1234--></a>", "line 1, column 4: a text is longer than 3 bytes"},
    };
    expectTraces(test::traceXml, rows, limits);
}

TEST(XmlReader, SlicesTheDocumentAndGathersTexts) {
    const std::string document = "<a><b x='v'>one<c>two</c> three</b><d/></a>";
    XmlReader reader(document);
    EXPECT_EQ(reader.next(), Event::StartElement);
    EXPECT_EQ(reader.next(), Event::StartElement);
    EXPECT_EQ(reader.depth(), 2);
    EXPECT_EQ(reader.attributes().find("x")->data(), document.data() + document.find('v'));
    EXPECT_FALSE(reader.attributes().find("y"));
    std::string text;
    EXPECT_TRUE(reader.readText(text));
    EXPECT_EQ(text, "one three");
    EXPECT_EQ(reader.name(), "b");
    EXPECT_EQ(reader.next(), Event::StartElement);
    EXPECT_EQ(reader.offset(), document.find("<d"));
    EXPECT_TRUE(reader.readText(text));
    EXPECT_EQ(text, "");
    EXPECT_EQ(reader.next(), Event::EndElement);
    EXPECT_EQ(reader.depth(), 1);
    EXPECT_EQ(reader.next(), Event::End);
    EXPECT_EQ(reader.next(), Event::End);
    EXPECT_FALSE(reader.readText(text));
}

} // namespace
