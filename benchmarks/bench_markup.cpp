// The readers and writers of markup, compared with Qt's. The document is a thousand reports of some
// hundred bytes each; reading looks at every name and text. QJsonDocument and QTextDocumentFragment
// build trees; Qt offers no other way.

#include "textmarkup_htmlreader.h"
#include "textmarkup_htmlwriter.h"
#include "textmarkup_jsonreader.h"
#include "textmarkup_jsonwriter.h"
#include "textmarkup_xmlreader.h"
#include "textmarkup_xmlwriter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextDocumentFragment>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <benchmark/benchmark.h>
#include <string>

namespace {

using textmarkup::Event;

constexpr int kReports = 1000;
constexpr const char* kMessage =
    "1 > 2 & \"Größe\" of the buffer at line 7 is <odd>, as it was before";

std::string makeXml() {
    textmarkup::XmlWriter writer;
    writer.declaration();
    writer.open("reports");
    for (int i = 0; i < kReports; ++i) {
        writer.open("assert", {{"station", "north-7"}, {"level", "1"}});
        writer.element("file", "some_module.cpp");
        writer.element("line", std::to_string(i));
        writer.element("message", kMessage);
        writer.close();
    }
    return writer.finish();
}

std::string makeJson() {
    textmarkup::JsonWriter writer;
    writer.openArray();
    for (int i = 0; i < kReports; ++i) {
        writer.openObject();
        writer.member("station", "north-7");
        writer.member("file", "some_module.cpp");
        writer.member("line", i);
        writer.member("share", i / 7.0);
        writer.member("message", kMessage);
        writer.close();
    }
    return writer.finish();
}

std::string makeHtml() {
    textmarkup::HtmlWriter writer;
    writer.doctype();
    writer.open("table", {{"class", "failures"}});
    for (int i = 0; i < kReports; ++i) {
        writer.open("tr", {{"id", "row"}, {"class", "alert"}});
        writer.element("td", "some_module.cpp");
        writer.element("td", std::to_string(i), {{"class", "number"}});
        writer.element("td", kMessage);
        writer.close();
    }
    return writer.finish();
}

/// Reads a whole text and calls `what` for each event.
template <typename Reader, typename What>
void readAll(benchmark::State& state, const std::string& text, What&& what) {
    for (auto _ : state) {
        Reader reader(text);
        size_t bytes = 0;
        for (Event event = reader.next(); event != Event::End && event != Event::Error;
             event = reader.next())
            bytes += what(reader, event);
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

QByteArray bytesOf(const std::string& text) { return {text.data(), static_cast<int>(text.size())}; }

void ReadXml_core(benchmark::State& state) {
    readAll<textmarkup::XmlReader>(state, makeXml(), [](const auto& reader, Event) {
        return reader.name().size() + reader.text().size() + reader.attributes().size();
    });
}
void ReadXml_QXmlStreamReader(benchmark::State& state) {
    const QByteArray text = bytesOf(makeXml());
    for (auto _ : state) {
        QXmlStreamReader reader(text);
        int length = 0;
        while (!reader.atEnd()) {
            reader.readNext();
            length += reader.name().size() + reader.text().size();
            if (reader.isStartElement())
                length += reader.attributes().size();
        }
        benchmark::DoNotOptimize(length);
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}

void ReadJson_core(benchmark::State& state) {
    readAll<textmarkup::JsonReader>(state, makeJson(), [](const auto& reader, Event event) {
        const size_t number = event == Event::Number ? static_cast<size_t>(*reader.toDouble()) : 0;
        return reader.name().size() + reader.text().size() + number;
    });
}
void ReadJson_QJsonDocument(benchmark::State& state) {
    const QByteArray text = bytesOf(makeJson());
    for (auto _ : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text).isArray());
    state.SetBytesProcessed(state.iterations() * text.size());
}

void ReadHtml_core(benchmark::State& state) {
    readAll<textmarkup::HtmlReader>(state, makeHtml(), [](const auto& reader, Event) {
        return reader.name().size() + reader.text().size() + reader.attributes().size();
    });
}
void ReadHtml_QTextDocument(benchmark::State& state) {
    const QString text = QString::fromStdString(makeHtml());
    for (auto _ : state)
        benchmark::DoNotOptimize(QTextDocumentFragment::fromHtml(text).isEmpty());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(makeHtml().size()));
}

void WriteXml_core(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(makeXml());
}
void WriteXml_QXmlStreamWriter(benchmark::State& state) {
    for (auto _ : state) {
        QByteArray text;
        QXmlStreamWriter writer(&text);
        writer.setAutoFormatting(true);
        writer.writeStartDocument();
        writer.writeStartElement("reports");
        for (int i = 0; i < kReports; ++i) {
            writer.writeStartElement("assert");
            writer.writeAttribute("station", "north-7");
            writer.writeAttribute("level", "1");
            writer.writeTextElement("file", "some_module.cpp");
            writer.writeTextElement("line", QString::number(i));
            writer.writeTextElement("message", kMessage);
            writer.writeEndElement();
        }
        writer.writeEndDocument();
        benchmark::DoNotOptimize(text.size());
    }
}

void WriteJson_core(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(makeJson());
}
void WriteJson_QJsonDocument(benchmark::State& state) {
    for (auto _ : state) {
        QJsonArray reports;
        for (int i = 0; i < kReports; ++i)
            reports.append(QJsonObject{{"station", "north-7"},
                                       {"file", "some_module.cpp"},
                                       {"line", i},
                                       {"share", i / 7.0},
                                       {"message", kMessage}});
        benchmark::DoNotOptimize(QJsonDocument(reports).toJson(QJsonDocument::Compact).size());
    }
}

BENCHMARK(ReadXml_core);
BENCHMARK(ReadXml_QXmlStreamReader);
BENCHMARK(ReadJson_core);
BENCHMARK(ReadJson_QJsonDocument);
BENCHMARK(ReadHtml_core);
BENCHMARK(ReadHtml_QTextDocument);
BENCHMARK(WriteXml_core);
BENCHMARK(WriteXml_QXmlStreamWriter);
BENCHMARK(WriteJson_core);
BENCHMARK(WriteJson_QJsonDocument);

} // namespace

BENCHMARK_MAIN();
