// Qt's reader accepts every document that ours accepts, and reads the same from it. Written and
// read again, it is unchanged.

#include "fuzz_input.h"
#include "markup_peers.h"
#include "markup_traces.h"
#include "textmarkup_jsonwriter.h"

#include <limits>
#include <string>

namespace {

using textmarkup::Event;

bool isRefused(const std::string& trace) { return trace.starts_with("line "); }

bool isExact(int64_t number) {
    constexpr int64_t kMost = int64_t{1} << 53U;
    return -kMost <= number && number <= kMost;
}

/// Whether Qt reads the document alike. Qt refuses numbers beyond a double, compares whole numbers
/// beyond 2^53 as unequal to themselves, drops byte order marks, keeps lone surrogates and requires
/// an object or array.
bool isForPeers(const std::string& document) {
    textmarkup::JsonReader reader(document);
    const Event first = reader.next();
    if (first != Event::StartObject && first != Event::StartArray)
        return false;
    for (Event event = first; event != Event::End; event = reader.next()) {
        if (event == Event::Number &&
            (!reader.toDouble() || !isExact(reader.toInt64().value_or(0))))
            return false;
        for (const std::string_view text : {reader.name(), reader.text()}) {
            if (text.find("\uFFFD") != std::string_view::npos ||
                text.find("\uFEFF") != std::string_view::npos ||
                text.find('\0') != std::string_view::npos)
                return false;
        }
    }
    return true;
}

std::string writtenAgain(const std::string& document) {
    textmarkup::JsonReader reader(document);
    textmarkup::JsonWriter writer;
    for (;;) {
        switch (reader.next()) {
        case Event::StartObject:
            writer.openObject(reader.name());
            break;
        case Event::StartArray:
            writer.openArray(reader.name());
            break;
        case Event::EndObject:
        case Event::EndArray:
            writer.close();
            break;
        case Event::String:
            writer.member(reader.name(), reader.text());
            break;
        case Event::Boolean:
            writer.member(reader.name(), reader.boolean());
            break;
        case Event::Number:
            if (reader.toInt64().value_or(0) != 0) // -0 is a double
                writer.member(reader.name(), *reader.toInt64());
            else
                writer.member(reader.name(),
                              reader.toDouble().value_or(std::numeric_limits<double>::infinity()));
            break;
        case Event::Null:
            writer.member(reader.name(), nullptr);
            break;
        default:
            return writer.finish();
        }
    }
}

void readsWhatPeersDo(const std::string& document) {
    if (isRefused(test::traceJson(document))) {
        fuzz::require(!isRefused(test::traceJson(writtenAgain(document))));
        return;
    }
    const std::string again = writtenAgain(document);
    fuzz::require(!isRefused(test::traceJson(again)) && writtenAgain(again) == again);
    if (isForPeers(document)) {
        textmarkup::JsonReader reader(document);
        const QJsonValue ours = test::toQt(reader, reader.next());
        const QJsonDocument qt = QJsonDocument::fromJson(test::bytesOf(document));
        fuzz::require(qt.isArray() ? ours == qt.array() : ours == qt.object());
    }
}

} // namespace

// Called by the leak check: Qt leaks repeated members.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libQt5Core.so\n"; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(data, data + size);
    readsWhatPeersDo(text);
    readsWhatPeersDo("[1" + text + "]");
    return 0;
}
