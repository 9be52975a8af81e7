#pragma once

#include <QString>
#include <QXmlStreamReader>

#include <string>
#include <utility>
#include <vector>

namespace test {

/// A document of one element with a flat list of others, as Qt's parser sees it.
struct XmlDocument {
    std::string error; ///< empty for a well-formed document
    std::string root;
    std::vector<std::pair<std::string, std::string>> elements; ///< names and texts, in order

    /// The text of the first element of that name; empty if there is none.
    std::string operator[](const std::string& name) const {
        for (const auto& [element, text] : elements) {
            if (element == name)
                return text;
        }
        return {};
    }
};

inline XmlDocument parseXml(const std::string& text) {
    XmlDocument document;
    QXmlStreamReader reader(QByteArray(text.data(), static_cast<int>(text.size())));
    if (reader.readNextStartElement())
        document.root = reader.name().toString().toStdString();
    while (reader.readNextStartElement()) {
        const std::string name = reader.name().toString().toStdString();
        document.elements.emplace_back(name, reader.readElementText().toStdString());
    }
    while (!reader.atEnd())
        reader.readNext();
    document.error = reader.errorString().toStdString();
    return document;
}

} // namespace test
