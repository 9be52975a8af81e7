// The HTML reader accepts any bytes, closes what it opened and keeps to its limits. Texts given to
// the writer come back as texts, from our reader and from Qt's.

#include "fuzz_input.h"
#include "markup_traces.h"
#include "textmarkup_htmlwriter.h"

#include <QTextDocumentFragment>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using textmarkup::Event;

void readsAnything(const std::string& document, const textmarkup::Limits& limits) {
    textmarkup::HtmlReader reader(document, limits);
    std::vector<std::string> open;
    size_t offset = 0;
    for (Event event = reader.next(); event != Event::End; event = reader.next()) {
        fuzz::require(event != Event::Error && reader.offset() >= offset);
        offset = reader.offset();
        if (event == Event::StartElement)
            open.emplace_back(reader.name());
        fuzz::require(reader.depth() == open.size() && open.size() <= limits.depth);
        fuzz::require(reader.text().size() <= limits.text &&
                      reader.attributes().size() <= limits.attributes);
        if (event == Event::EndElement) {
            fuzz::require(open.back() == reader.name());
            open.pop_back();
        }
    }
    fuzz::require(open.empty());
}

/// The text that is read back after writing, with invalid bytes replaced.
std::string replaced(const std::string& text) {
    textmarkup::HtmlWriter writer;
    writer.text("|" + text); // since a byte order mark at the front would be skipped
    const std::string document = writer.finish();
    textmarkup::HtmlReader reader(document);
    reader.next();
    return std::string(reader.text().substr(1));
}

void writesWhatIsRead(fuzz::Input input) {
    constexpr const char* kElements[] = {"b", "pre", "title", "textarea", "script", "style"};
    const std::string element = kElements[input.byte() % 6];
    const std::string name = input.text(9);
    const std::string value = input.text(99);
    const std::string text = input.text(255);
    textmarkup::HtmlWriter writer;
    writer.comment(text);
    writer.element(element, text, {{"id", value}, {name, text}});
    writer.open("after");
    const std::string document = writer.finish();
    textmarkup::HtmlReader reader(document);
    fuzz::require(reader.next() == Event::Comment && reader.next() == Event::StartElement);
    fuzz::require(reader.name() == element && reader.attributes()[0].value == replaced(value));
    Event event = reader.next();
    if (event == Event::Text) {
        fuzz::require(element[0] == 's' || reader.text() == replaced(text));
        event = reader.next();
    }
    fuzz::require(event == Event::EndElement && reader.name() == element);
    fuzz::require(reader.next() == Event::StartElement && reader.name() == "after");
}

void readsAsQtDoes(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char ch) { return ch <= ' ' || ch > '~'; }, 'x');
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
    const QString qt = QTextDocumentFragment::fromHtml(QString::fromStdString(page)).toPlainText();
    fuzz::require(ours == text && qt.toStdString() == text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string document(data, data + size);
    readsAnything(document, {});
    readsAnything(document, {.depth = 3, .text = 10, .attributes = 2});
    writesWhatIsRead({data, size});
    readsAsQtDoes(document);
    return 0;
}
