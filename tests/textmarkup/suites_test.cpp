// The readers, tested with public suites if these are beside the repository: JSONTestSuite (files
// y_* must be accepted, n_* refused, i_* may be either) and James Clark's cases of the W3C XML
// suite.

#include "markup_traces.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace {

namespace fs = std::filesystem;
using textmarkup::Event;

/// Names and contents of a folder's files; empty if the suite is missing.
std::map<std::string, std::string> filesOf(const std::string& folder, const std::string& ending) {
    std::map<std::string, std::string> files;
    const fs::path path = fs::path(ORVISTRAND_MARKUP_SUITES) / folder;
    if (fs::is_directory(path)) {
        for (const auto& entry : fs::directory_iterator(path)) {
            if (entry.path().extension() == ending)
                files[entry.path().filename().string()] = test::readFile(entry.path().string());
        }
    }
    return files;
}

constexpr const char* kNoSuite = "no suite below " ORVISTRAND_MARKUP_SUITES;

bool isRefused(const std::string& trace) { return trace.starts_with("line "); }

TEST(MarkupSuites, JsonIsTakenAndRefused) {
    const auto files = filesOf("json/test_parsing", ".json");
    if (files.empty())
        GTEST_SKIP() << kNoSuite;
    EXPECT_EQ(files.size(), 318);
    for (const auto& [name, text] : files) {
        const bool refused = isRefused(test::traceJson(text));
        EXPECT_TRUE(name[0] == 'i' || refused == (name[0] == 'n')) << name;
    }
}

TEST(MarkupSuites, XmlThatIsNotWellFormedIsRefused) {
    const auto files = filesOf("xml/not-wf/sa", ".xml");
    if (files.empty())
        GTEST_SKIP() << kNoSuite;
    EXPECT_EQ(files.size(), 186);
    for (const auto& [name, text] : files)
        EXPECT_TRUE(isRefused(test::traceXml(text))) << name;
}

/// The form that the suite compares: attributes sorted, no comments, texts joined.
std::string canonical(const std::string& document) {
    textmarkup::XmlReader reader(document);
    std::string out;
    for (;;) {
        switch (reader.next()) {
        case Event::StartElement: {
            std::vector attributes(reader.attributes().begin(), reader.attributes().end());
            std::ranges::sort(attributes, {}, &textmarkup::Attribute::name);
            out.append("<").append(reader.name());
            for (const auto& [name, value] : attributes)
                out.append(" ").append(name).append("=\"").append(value).append("\"");
            out += '>';
            break;
        }
        case Event::EndElement:
            out.append("</").append(reader.name()).append(">");
            break;
        case Event::Text:
            out += reader.text();
            break;
        case Event::Instruction:
            out.append("<?").append(reader.name()).append(" ").append(reader.text()).append("?>");
            break;
        case Event::Comment:
            break;
        case Event::End:
            return out;
        default:
            return reader.error().text();
        }
    }
}

/// The document without its document type, if that has no effect on the contents.
std::string withoutDocumentType(const std::string& document) {
    const size_t start = document.find("<!DOCTYPE");
    const size_t end = document.find("]>", start);
    if (start == std::string::npos || end == std::string::npos)
        return document;
    const std::string type = document.substr(start, end - start);
    for (const char* word :
         {"ENTITY", "NOTATION", "NMTOKEN", "ID", "FIXED", "'", "\"", "<?", "%"}) {
        if (type.find(word) != std::string::npos)
            return document;
    }
    return document.substr(0, start) + document.substr(end + 2);
}

TEST(MarkupSuites, XmlThatIsWellFormedReadsAsItIsMeant) {
    const auto files = filesOf("xml/valid/sa", ".xml");
    if (files.empty())
        GTEST_SKIP() << kNoSuite;
    const auto expected = filesOf("xml/valid/sa/out", ".xml");
    size_t read = 0;
    for (const auto& [name, text] : files) {
        const std::string document = withoutDocumentType(text);
        const bool isUtf16 = document.find('\0') != std::string::npos;
        if (isUtf16 || document.find("<!DOCTYPE") != std::string::npos) {
            EXPECT_TRUE(isRefused(test::traceXml(document))) << name;
            continue;
        }
        EXPECT_EQ(canonical(document), canonical(expected.at(name))) << name;
        ++read;
    }
    EXPECT_EQ(read, 75);
}

} // namespace
