// The XML reader takes what Qt's takes, and reads the same; what the writer makes of any
// texts and calls is read back as it was meant.

#include "fuzz_input.h"
#include "markup_peers.h"
#include "markup_traces.h"
#include "textmarkup_xmlwriter.h"

#include <string>

namespace {

/// Where Qt differs: it reads document types, other encodings and names by an older
/// edition, knows version 1.0 only, and takes no attribute whose name begins with a colon.
bool isForPeers(const std::string& document) {
    for (const char ch : document) {
        if (static_cast<uint8_t>(ch) >= 0x80 || ch == '\0' || ch == ':')
            return false;
    }
    return document.find("<!DOCTYPE") == std::string::npos &&
           document.find("<?xml") == std::string::npos;
}

void readsAsQtDoes(const std::string& document) {
    const std::string ours = test::traceXml(document);
    const bool refused = ours.starts_with("line ");
    if (isForPeers(document))
        fuzz::require((refused ? "refused" : ours) == test::traceXmlByQt(document));
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
    readsAsQtDoes({data, data + size});
    writesWhatIsRead({data, size});
    return 0;
}
