#include "textmarkup_xmlreader.h"

#include "markup_traces.h"

#include <gtest/gtest.h>

namespace {

using textmarkup::Event;
using textmarkup::XmlReader;

struct Row {
    int line;
    std::string document;
    std::string trace;
};

TEST(XmlReader, ReadsWhatIsWellFormed) {
    const Row rows[] = {
        {__LINE__, "<a/>", "<a></a>"},
        {__LINE__,
         "\uFEFF<?xml version='1.0' encoding='UTF-8' standalone = \"no\" ?>\n<a > </a >\n",
         "<a>[ ]</a>"},
        {__LINE__, "<?xml version=\"1.17\" encoding='utf-8'?><a/>", "<a></a>"},
        {__LINE__, "<a x='1' y = \"&#x3C;'&quot;\"\n/>", "<a x=\"1\" y=\"<'\"\"></a>"},
        {__LINE__, "<a x=' \t\n\r\n\r&#9;&#10;&#13;'/>", "<a x=\"     \t\n\r\"></a>"},
        {__LINE__, "<a>1<b>2</b>3<c/></a>", "<a>[1]<b>[2]</b>[3]<c></c></a>"},
        {__LINE__, "<a>\r\n\r\r&#13;\n</a>", "<a>[\n\n\n\r\n]</a>"},
        {__LINE__, "<a>x&amp;&lt;&gt;&apos;&quot;&#120;&#x1F600;y</a>",
         "<a>[x&<>'\"x\U0001F600y]</a>"},
        {__LINE__, "<a>1<![CDATA[<&amp;\r\n]]]]>2<![CDATA[]]></a>", "<a>[1<&amp;\n]]2]</a>"},
        {__LINE__, "<a><![CDATA[]]></a>", "<a></a>"},
        {__LINE__, "<a>]] ]></a>", "<a>[]] ]>]</a>"},
        {__LINE__, "<!----><?p?><a><?p  d ? ?><!-- - <b> --></a><!--\r-->",
         "<!----><?p ?><a><?p d ? ?><!-- - <b> --></a><!--\n-->"},
        {__LINE__, "<Größe·1 _:.-='é'/>", "<Größe·1 _:.-=\"é\"></Größe·1>"},
    };
    for (const auto& [line, document, trace] : rows)
        EXPECT_EQ(test::traceXml(document), trace) << "row at line " << line;
}

TEST(XmlReader, TellsWhereAndWhyItStops) {
    const Row rows[] = {
        {__LINE__, "", "line 1, column 1: the document has no element"},
        {__LINE__, " \n x<a/>", "line 2, column 2: text stands outside the root element"},
        {__LINE__, "<a/>\r\n\r<b/>", "line 3, column 1: a second element follows the root element"},
        {__LINE__, "<a>\u00E9<b></a>", "line 1, column 8: the element 'b' is closed as 'a'"},
        {__LINE__, "<a>\n", "line 2, column 1: the document ends within the element 'a'"},
        {__LINE__, "</a>", "line 1, column 1: an element is closed that was not opened"},
        {__LINE__, "<a></a x>", "line 1, column 8: the end tag 'a' is malformed here"},
        {__LINE__, "<a><1/></a>", "line 1, column 4: '<' begins no tag"},
        {__LINE__, "<a x='1'y='2'/>", "line 1, column 9: the tag 'a' is malformed here"},
        {__LINE__, "<a / >", "line 1, column 5: the tag 'a' is malformed here"},
        {__LINE__, "<a x='1' x='2'/>", "line 1, column 10: the attribute 'x' is there twice"},
        {__LINE__, "<a x/>", "line 1, column 5: the attribute 'x' has no '='"},
        {__LINE__, "<a x=1/>", "line 1, column 6: the attribute 'x' has no value in quotes"},
        {__LINE__, "<a x='<'/>", "line 1, column 7: the value of 'x' has no closing quote"},
        {__LINE__, "<a>&nbsp;</a>", "line 1, column 4: the entity 'nbsp' is not known"},
        {__LINE__, "<a>a & b;</a>", "line 1, column 6: '&' begins no reference that ends in ';'"},
        {__LINE__, "<a>&#0;</a>", "line 1, column 4: '&#0;' is no character that XML allows"},
        {__LINE__, "<a>&#X41;</a>", "line 1, column 4: '&#X41;' is no character that XML allows"},
        {__LINE__, "<a>&#99999999999;</a>",
         "line 1, column 4: '&#99999999999;' is no character that XML allows"},
        {__LINE__, "<a>]]></a>", "line 1, column 4: ']]>' stands in a text"},
        {__LINE__, "<a>\x1B</a>",
         "line 1, column 4: a character stands here that XML does not allow"},
        {__LINE__, "<a>\uFFFF</a>",
         "line 1, column 4: a character stands here that XML does not allow"},
        {__LINE__, "<a>\xC3(</a>", "line 1, column 4: a byte is not part of UTF-8"},
        {__LINE__, "<a><!-- -- --></a>", "line 1, column 9: '--' stands within a comment"},
        {__LINE__, "<a><!-- ", "line 1, column 4: a comment does not end"},
        {__LINE__, "<a><![CDATA[ ", "line 1, column 4: a CDATA section does not end"},
        {__LINE__, "<a><?b ", "line 1, column 4: a processing instruction does not end"},
        {__LINE__, "<a/><? b?>", "line 1, column 7: a processing instruction has no target"},
        {__LINE__, " <?xml version='1.0'?><a/>",
         "line 1, column 2: an XML declaration stands only at the very beginning"},
        {__LINE__, "<?xml version='2.0'?><a/>",
         "line 1, column 20: the XML declaration does not begin with a version 1.x"},
        {__LINE__, "<?xml version='1.0' encoding='iso-8859-1'?><a/>",
         "line 1, column 42: the document is in 'iso-8859-1', only UTF-8 is read"},
        {__LINE__, "<?xml version='1.0' standalone='No'?><a/>",
         "line 1, column 36: 'standalone' is neither 'yes' nor 'no'"},
        {__LINE__, "<?xml version='1.0' x='1'?><a/>",
         "line 1, column 21: the XML declaration is malformed"},
        {__LINE__, std::string("<\0a\0/\0>\0", 8),
         "line 1, column 1: the document is in UTF-16 or UTF-32, and only UTF-8 is read"},
        {__LINE__, "<!DOCTYPE a><a/>",
         "line 1, column 1: the document has a document type, and such are not read"},
        {__LINE__, "<a><!ELEMENT a></a>",
         "line 1, column 4: '<!' begins neither a comment nor a CDATA section"},
    };
    for (const auto& [line, document, trace] : rows)
        EXPECT_EQ(test::traceXml(document), trace) << "row at line " << line;
}

TEST(XmlReader, KeepsToItsLimits) {
    const textmarkup::Limits limits{.depth = 2, .text = 3, .attributes = 1};
    const Row rows[] = {
        {__LINE__, "<a x='123'><b/>123</a>", "<a x=\"123\"><b></b>[123]</a>"},
        {__LINE__, "<a><b><c/></b></a>", "line 1, column 7: more than 2 levels are open"},
        {__LINE__, "<a x='1' y='2'/>",
         "line 1, column 10: the element 'a' has more than 1 attributes"},
        {__LINE__, "<a x='1234'/>", "line 1, column 1: a text is longer than 3 bytes"},
        {__LINE__, "<a>12&lt;4</a>", "line 1, column 4: a text is longer than 3 bytes"},
        {__LINE__, "<a><!--1234--></a>", "line 1, column 4: a text is longer than 3 bytes"},
    };
    for (const auto& [line, document, trace] : rows)
        EXPECT_EQ(test::traceXml(document, limits), trace) << "row at line " << line;
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
