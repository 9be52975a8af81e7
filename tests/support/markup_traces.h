#pragma once

#include "textmarkup_htmlreader.h"
#include "textmarkup_jsonreader.h"
#include "textmarkup_xmlreader.h"

#include <string>

namespace test {

/// What a reader of tags tells about a document, in short: `<a x="1">`, `</a>`, texts in
/// brackets; or the error.
template <typename Reader>
std::string traceTags(const std::string& document, const textmarkup::Limits& limits) {
    using textmarkup::Event;
    Reader reader(document, limits);
    std::string trace;
    for (;;) {
        switch (reader.next()) {
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
        case Event::DocumentType:
            trace.append("<!").append(reader.text()).append(">");
            break;
        case Event::End:
            return trace;
        default:
            if constexpr (requires { reader.error(); })
                return reader.error().text();
            return "not an event of HTML";
        }
    }
}

inline std::string traceXml(const std::string& document, const textmarkup::Limits& limits = {}) {
    return traceTags<textmarkup::XmlReader>(document, limits);
}

inline std::string traceHtml(const std::string& document, const textmarkup::Limits& limits = {}) {
    return traceTags<textmarkup::HtmlReader>(document, limits);
}

/// The value without blanks, strings in single quotes and names in none; or the error.
inline std::string traceJson(const std::string& document, const textmarkup::Limits& limits = {}) {
    using textmarkup::Event;
    textmarkup::JsonReader reader(document, limits);
    std::string trace;
    for (;;) {
        const Event event = reader.next();
        if (event == Event::Error)
            return reader.error().text();
        if (event == Event::End)
            return trace;
        const bool ends = event == Event::EndObject || event == Event::EndArray;
        if (!ends && !trace.empty() && trace.back() != '[' && trace.back() != '{')
            trace += ',';
        if (!reader.name().empty())
            trace.append(reader.name()).append(":");
        switch (event) {
        case Event::StartObject:
        case Event::StartArray:
            trace += event == Event::StartObject ? '{' : '[';
            break;
        case Event::EndObject:
        case Event::EndArray:
            trace += event == Event::EndObject ? '}' : ']';
            break;
        case Event::String:
            trace.append("'").append(reader.text()).append("'");
            break;
        default:
            trace += reader.text();
        }
    }
}

} // namespace test
