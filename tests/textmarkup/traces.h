#pragma once

#include "textmarkup_xmlreader.h"

#include <string>

namespace test {

/// What a reader tells about a document, in short: `<a x="1">`, `</a>`, texts in
/// brackets, and the error last.
inline std::string traceXml(const std::string& document, const textmarkup::Limits& limits = {}) {
    using textmarkup::Event;
    textmarkup::XmlReader reader(document, limits);
    std::string trace;
    for (;;) {
        switch (const Event event = reader.next(); event) {
        case Event::StartElement:
            trace.append("<").append(reader.name());
            for (const auto& [name, value] : reader.attributes())
                trace.append(" ").append(name).append("=\"").append(value).append("\"");
            trace += ">";
            break;
        case Event::EndElement:
            trace.append("</").append(reader.name()).append(">");
            break;
        case Event::Text:
            trace.append("[").append(reader.text()).append("]");
            break;
        case Event::Comment:
            trace.append("<!--").append(reader.text()).append("-->");
            break;
        case Event::Instruction:
            trace.append("<?").append(reader.name()).append(" ").append(reader.text()).append("?>");
            break;
        default:
            return event == Event::Error ? reader.error().text() : trace;
        }
    }
}

} // namespace test
