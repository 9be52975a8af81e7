// Qt's reader accepts every document that ours accepts, and reads the same from it. Whatever texts
// and calls the writer gets, its document is well-formed.

#include "fuzz_input.h"
#include "markup_peers.h"
#include "markup_traces.h"
#include "textmarkup_xmlwriter.h"

#include <string>

namespace {

/// Whether Qt reads the document, too. It refuses names from a newer edition, versions other than
/// 1.0, and attributes whose names begin with a colon.
bool isForPeers(const std::string& document) {
    for (const char ch : document) {
        if (static_cast<uint8_t>(ch) >= 0x80 || ch == '\0' || ch == ':')
            return false;
    }
    return document.find("<?xml") == std::string::npos;
}

void readsAsQtDoes(const std::string& document) {
    const std::string ours = test::traceXml(document);
    if (!ours.starts_with("line ") && isForPeers(document)) // Qt takes some odd names
        fuzz::require(ours == test::traceXmlByQt(document));
}

void writesWhatIsRead(fuzz::Input input) {
    textmarkup::XmlWriter writer;
    writer.open("root");
    while (!input.empty()) {
        const uint8_t call = input.byte();
        const std::string text = input.text(20);
        const std::string other = input.text(20);
        if (call % 6 == 0)
            writer.open(text, {{other, text}, {text, other}});
        else if (call % 6 == 1)
            writer.close();
        else if (call % 6 == 2)
            writer.element(text, other, call);
        else if (call % 6 == 3)
            writer.text(text);
        else if (call % 6 == 4)
            writer.comment(text);
        else
            writer.declaration();
    }
    const std::string trace = test::traceXml(writer.finish(), {.depth = 1'000'000});
    fuzz::require(!trace.starts_with("line "));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(data, data + size);
    readsAsQtDoes(text);
    readsAsQtDoes("<r>" + text + "</r>");
    writesWhatIsRead({data, size});
    return 0;
}
