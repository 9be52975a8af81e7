// Failure reports are well-formed, judged by Qt's parser, and fit into a datagram, whatever their
// texts. A plain text arrives unchanged.

#include "core_failurereport.h"
#include "core_udp4socket.h"
#include "fuzz_input.h"
#include "textmarkup_xmlwriter.h"
#include "xml_document.h"

#include <algorithm>
#include <string>

namespace {

/// A text from the input, repeated so that all lengths occur.
std::string makeText(fuzz::Input& input) {
    const size_t times = size_t{1} << input.byte() % 10;
    const std::string piece = input.text(255);
    std::string text;
    for (size_t i = 0; i < times; ++i)
        text += piece;
    return text;
}

bool isPlain(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char ch) { return ch >= ' ' && ch <= '~'; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    core::FailureReport report;
    report.site.file = makeText(input);
    report.condition = makeText(input);
    report.message = makeText(input);
    report.backtrace = makeText(input);
    const std::string server = makeText(input);

    const std::string text = core::assertDocument(report, {.server = server});
    fuzz::require(text.size() <= core::Udp4Socket::kMaxLength);
    const test::XmlDocument document = test::parseXml(text);
    fuzz::require(document.error.empty() && document.elements.size() == 19);
    if (isPlain(report.message) && report.message.size() < 1000)
        fuzz::require(document["message"] == report.message);
    if (report.message.size() > core::Udp4Socket::kMaxLength)
        fuzz::require(document["message"].ends_with("..."));

    const core::CheckSite site{report.site.file.c_str(), 1};
    fuzz::require(test::parseXml(core::sendLogsDocument(site, server)).error.empty());

    const size_t limit = input.byte();
    const std::string cut = textmarkup::escaped(report.message, limit);
    fuzz::require(cut.size() <= limit && test::parseXml("<a>" + cut + "</a>").error.empty());
    return 0;
}
