// Our readers beside Qt's: what both are told to take they read the same.

#include "markup_peers.h"
#include "markup_traces.h"
#include "textmarkup_htmlwriter.h"

#include <QTextDocumentFragment>

#include <gtest/gtest.h>

#include <random>

namespace {

using textmarkup::Event;

/// Documents near well-formed ones, by pieces in an order that is the same every time.
class Documents {
public:
    explicit Documents(std::vector<std::string> pieces) : d_pieces(std::move(pieces)) {}

    std::string next() {
        std::string document;
        for (size_t count = d_random() % 12; count > 0; --count)
            document += d_pieces[d_random() % d_pieces.size()];
        return document;
    }

private:
    std::vector<std::string> d_pieces;
    std::minstd_rand d_random;
};

TEST(MarkupPeers, QtReadsTheSameXml) {
    Documents documents({"<a>", "</a>", "<b x='1' y=\"'>\"/>", "<c z='\t&lt;\n'>", "</c>", "text",
                         "&amp;", "&#65;", "&nope;", "]]>", "<![CDATA[<&]]>", "<!-- - -->",
                         "<!---->", "<?p d?>", "\r\n", "<d x='' x=''/>", "<", "é"});
    size_t taken = 0;
    for (int i = 0; i < 5000; ++i) {
        const std::string document = "<r>" + documents.next() + "</r>";
        const std::string ours = test::traceXml(document);
        const bool refused = ours.starts_with("line ");
        EXPECT_EQ(refused ? "refused" : ours, test::traceXmlByQt(document)) << document;
        taken += refused ? 0 : 1;
    }
    EXPECT_GT(taken, 500); // both kinds are there
    EXPECT_LT(taken, 4500);
}

TEST(MarkupPeers, QtReadsTheSameJson) {
    Documents documents({"[", "]", "{", "}", "\"a\":", "\"b\\n\\u00e9\":", "\"text\"", ",", ",",
                         "1", "-0.5e+3", "true", "null", "false", " ", "\n", "x", "é"});
    size_t taken = 0;
    for (int i = 0; i < 20'000; ++i) {
        const std::string document = "[1" + documents.next() + "]";
        if (test::traceJson(document).starts_with("line "))
            continue;
        textmarkup::JsonReader reader(document);
        EXPECT_EQ(test::toQt(reader, reader.next()),
                  QJsonDocument::fromJson(test::bytesOf(document)).array())
            << document;
        ++taken;
    }
    EXPECT_GT(taken, 100);
}

TEST(MarkupPeers, QtReadsTheSameHtml) {
    for (const char* text :
         {"plain", "a &lt; <b> \"&amp;\"", "Größe & 設定 \U0001F600", "x</p><p>y"}) {
        textmarkup::HtmlWriter writer;
        writer.doctype();
        writer.open("body");
        writer.comment("not -- shown");
        writer.element("p", text, {{"title", text}});
        const std::string page = writer.finish();
        std::string ours;
        textmarkup::HtmlReader reader(page);
        for (Event event = reader.next(); event != Event::End; event = reader.next()) {
            if (event == Event::Text && reader.depth() > 0)
                ours += reader.text();
        }
        EXPECT_EQ(ours, text);
        EXPECT_EQ(QTextDocumentFragment::fromHtml(test::qtText(page)).toPlainText(),
                  test::qtText(text));
    }
}

} // namespace
