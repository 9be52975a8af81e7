#pragma once

#include "textmarkup_jsonreader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QXmlStreamReader>

#include <string>
#include <string_view>

/// What Qt's readers read from a document, to be compared with ours.
namespace test {

inline QByteArray bytesOf(std::string_view text) {
    return {text.data(), static_cast<int>(text.size())};
}
inline QString qtText(std::string_view text) { return QString::fromUtf8(bytesOf(text)); }

/// The trace in the form of traceXml; "refused" for an error.
inline std::string traceXmlByQt(const std::string& document) {
    QXmlStreamReader reader(bytesOf(document));
    reader.setNamespaceProcessing(false);
    std::string trace;
    std::string text; // Qt reports CDATA separately
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::Characters) {
            text += reader.text().toString().toStdString();
            continue;
        }
        if (!text.empty())
            trace.append("[").append(std::exchange(text, {})).append("]");
        if (token == QXmlStreamReader::StartElement) {
            trace += "<" + reader.qualifiedName().toString().toStdString();
            for (const QXmlStreamAttribute& attribute : reader.attributes())
                trace += " " + attribute.qualifiedName().toString().toStdString() + "=\"" +
                         attribute.value().toString().toStdString() + "\"";
            trace += ">";
        } else if (token == QXmlStreamReader::EndElement) {
            trace += "</" + reader.qualifiedName().toString().toStdString() + ">";
        } else if (token == QXmlStreamReader::Comment) {
            trace += "<!--" + reader.text().toString().toStdString() + "-->";
        } else if (token == QXmlStreamReader::ProcessingInstruction) {
            trace += "<?" + reader.processingInstructionTarget().toString().toStdString() + " " +
                     reader.processingInstructionData().toString().toStdString() + "?>";
        }
    }
    return reader.hasError() ? "refused" : trace;
}

/// What our reader reads, from its event `event` on, as a Qt value. The document must have no
/// errors. As in Qt's objects, the last of several members with the same name counts.
inline QJsonValue toQt(textmarkup::JsonReader& reader, textmarkup::Event event) {
    using textmarkup::Event;
    switch (event) {
    case Event::StartObject: {
        QJsonObject object;
        while ((event = reader.next()) != Event::EndObject) {
            const QString name = qtText(reader.name());
            object.insert(name, toQt(reader, event));
        }
        return object;
    }
    case Event::StartArray: {
        QJsonArray array;
        while ((event = reader.next()) != Event::EndArray)
            array.append(toQt(reader, event));
        return array;
    }
    case Event::String:
        return qtText(reader.text());
    case Event::Number:
        return reader.toDouble().value_or(0);
    case Event::Boolean:
        return reader.boolean();
    default:
        return {};
    }
}

} // namespace test
