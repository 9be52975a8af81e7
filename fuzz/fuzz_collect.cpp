// The collector, without its socket: whatever datagrams come, it goes on, its page is well-formed,
// and its stored lines restore the same table. Stored lines may be damaged, too.

#include "collect_export.h"
#include "collect_lines.h"
#include "collect_page.h"
#include "core_failurereport.h"
#include "core_utf.h"
#include "fuzz_input.h"
#include "textmarkup_jsonreader.h"

#include <string>
#include <string_view>

namespace {

/// A document as stations send it, with arbitrary texts.
std::string documentOf(fuzz::Input& input) {
    core::FailureReport report;
    report.site.file = input.text(20);
    report.message = input.text(255);
    report.backtrace = input.text(255);
    report.count = input.byte() % 4;
    report.total = input.byte() % 8;
    return core::assertDocument(report, {.server = input.text(20)});
}

size_t countOf(std::string_view part, std::string_view text) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

void requireJson(const std::string& text) {
    textmarkup::JsonReader reader(text);
    textmarkup::Event event = reader.next();
    while (event != textmarkup::Event::End) {
        fuzz::require(event != textmarkup::Event::Error);
        event = reader.next();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    collect::Table table;
    collect::Table replayed;
    for (int64_t time = 0; !input.empty(); time += 1'000'000) {
        const bool isRaw = input.byte() % 2 == 0;
        const std::string datagram = isRaw ? input.text(255) : documentOf(input);
        (void)collect::replayLine(datagram, replayed);
        collect::Arrival arrival{.time = time, .sender = "10.0.0.1:1", .report = {}};
        std::string error;
        if (collect::readDocument(datagram, arrival.report, error) == collect::Document::Failure)
            table.add(arrival);
    }

    const std::string page = collect::makePage(table, {}, 0);
    fuzz::require(core::isValidUtf8(page));
    fuzz::require(countOf("<script", page) <= 1 && countOf("<style", page) == 1);
    fuzz::require(countOf("<h1", page) == 1 && countOf("</html", page) == 1);
    const std::string json = collect::exportTable(table, collect::Options::Format::Json);
    requireJson(json);

    collect::Table again;
    for (auto entry = table.entries().rbegin(); entry != table.entries().rend(); ++entry) {
        std::string line = collect::lineOf(*entry);
        line.pop_back();
        fuzz::require(line.find('\n') == std::string::npos && collect::replayLine(line, again));
    }
    fuzz::require(collect::exportTable(again, collect::Options::Format::Json) == json);
    (void)collect::exportTable(replayed, collect::Options::Format::Csv);
    return 0;
}
