// Saving and loading a result document with 100 MB of text content (UTF-8), beside a bare
// QXmlStreamWriter writing the same text into the same element structure and a bare
// QXmlStreamReader reading that file back, all in the same run. Two texts: line feeds only,
// and CR LF line ends (every carriage return costs the document an escape, &#13;, that
// the bare writer does not write and that its output does not survive).
//
//   build/bin/nerikresultdata_bench
//   ZELKO_BENCH_MB=20 build/bin/nerikresultdata_bench   (a quicker look)

#include "ratioreporter.h"

#include <QDir>
#include <QFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <memory>
#include <nerikresultdataxml/nerikresultdata.h>

using namespace NerikResultDataXml;

namespace {

int const blocksPerTransmission = 10;

qint64 contentMegabytes()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return fromEnvironment > 0 ? fromEnvironment : 100;
}

struct Workload
{
    std::string label;
    QString text; // one block's content; every block shares it
    int blocks = 0;
    qint64 contentBytes = 0; // UTF-8 bytes of all content
    QString path;
    std::unique_ptr<NerikResultData> document;
};

// Decoded-radio-like text: words, digits, a little markup and non-ASCII, 1 MB per block.
QString blockText(bool crlf)
{
    static char const* const words[] = {
        "CQ", "DE",      "DABC",           "QTH", "BREMEN", "RST", "599", "<WX>", "R&R", "K",
        "73", "STRASSE", "M\xC3\xBCNCHEN", "QSL", "TU",     "5NN", "PSE", "AR"};
    QString text;
    text.reserve(1000000 + 100);
    int line = 0;
    for (unsigned i = 0; text.size() < 1000000; ++i) {
        text.append(QString::fromUtf8(words[(i * 7919u) % (sizeof(words) / sizeof(words[0]))]));
        line += 6;
        if (line > 64) {
            text.append(crlf ? QStringLiteral("\r\n") : QStringLiteral("\n"));
            line = 0;
        } else {
            text.append(QLatin1Char(' '));
        }
    }
    return text;
}

void buildWorkload(Workload& workload, bool crlf)
{
    workload.text = blockText(crlf);
    qint64 const blockBytes = workload.text.toUtf8().size();
    workload.blocks = int((contentMegabytes() * 1000000 + blockBytes - 1) / blockBytes);
    workload.contentBytes = blockBytes * workload.blocks;
    workload.document = std::make_unique<NerikResultData>();
    Transmission* transmission = nullptr;
    QDateTime const start(QDate(2024, 1, 31), QTime(12, 0), Qt::UTC);
    for (int b = 0; b < workload.blocks; ++b) {
        if (b % blocksPerTransmission == 0) {
            transmission = new Transmission;
            transmission->SetStartTime(start.addSecs(b));
            workload.document->AddTransmission(transmission);
        }
        auto* block = new DataBlock(b % blocksPerTransmission);
        block->SetID(workload.document->GetNextID());
        block->SetTimeStamp(start.addSecs(b));
        block->BeginFrame();
        block->AppendData(workload.text);
        block->EndFrame();
        transmission->AddDataBlock(block);
    }
}

void bareWriter(benchmark::State& state, Workload const* workload)
{
    for (auto _ : state) {
        QFile file(workload->path + QStringLiteral(".bare"));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            state.SkipWithError("cannot write");
            return;
        }
        QXmlStreamWriter writer(&file);
        writer.setCodec("UTF-8");
        writer.setAutoFormatting(true);
        writer.writeStartDocument();
        writer.writeStartElement(QStringLiteral("NerikResultData"));
        for (int b = 0; b < workload->blocks; ++b) {
            if (b % blocksPerTransmission == 0) {
                if (b > 0) {
                    writer.writeEndElement();
                }
                writer.writeStartElement(QStringLiteral("Transmission"));
            }
            writer.writeStartElement(QStringLiteral("DataBlock"));
            writer.writeAttribute(QStringLiteral("id"), QString::number(b + 1));
            writer.writeTextElement(QStringLiteral("Content"), workload->text);
            writer.writeEndElement();
        }
        writer.writeEndDocument();
        file.close();
    }
    state.SetBytesProcessed(state.iterations() * workload->contentBytes);
}

void saveFile(benchmark::State& state, Workload const* workload)
{
    for (auto _ : state) {
        QFile file(workload->path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            !workload->document->SaveFile(file)) {
            state.SkipWithError("SaveFile failed");
            return;
        }
        file.close();
    }
    state.SetBytesProcessed(state.iterations() * workload->contentBytes);
}

void bareReader(benchmark::State& state, Workload const* workload)
{
    for (auto _ : state) {
        QFile file(workload->path + QStringLiteral(".bare"));
        if (!file.open(QIODevice::ReadOnly)) {
            state.SkipWithError("cannot read");
            return;
        }
        QXmlStreamReader reader(&file);
        qint64 characters = 0;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement &&
                reader.name() == QLatin1String("Content")) {
                characters += reader.readElementText().size();
            }
        }
        benchmark::DoNotOptimize(characters);
    }
    state.SetBytesProcessed(state.iterations() * workload->contentBytes);
}

void loadFile(benchmark::State& state, Workload const* workload)
{
    for (auto _ : state) {
        NerikResultData loaded;
        if (!loaded.LoadFile(workload->path)) {
            state.SkipWithError("LoadFile failed");
            return;
        }
        if (loaded.GetTransmission().size() != workload->document->GetTransmission().size()) {
            state.SkipWithError("loaded document differs");
        }
    }
    state.SetBytesProcessed(state.iterations() * workload->contentBytes);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    QString const directory = QDir::tempPath();
    Workload workloads[2];
    workloads[0].label = "LF";
    workloads[1].label = "CRLF";
    for (int i = 0; i < 2; ++i) {
        Workload& workload = workloads[i];
        buildWorkload(workload, i == 1);
        workload.path = directory + QStringLiteral("/zelko-bench-result-%1.xml")
                                        .arg(QString::fromStdString(workload.label));
        std::fprintf(stderr, "%s: %d blocks, %lld MB of content\n", workload.label.c_str(),
                     workload.blocks, workload.contentBytes / 1000000);
        std::string const label = workload.label;
        // Bare writer first: it also leaves the file the bare reader reads.
        for (auto const& entry :
             {std::make_pair("bare_writer/", bareWriter), std::make_pair("SaveFile/", saveFile),
              std::make_pair("bare_reader/", bareReader), std::make_pair("LoadFile/", loadFile)}) {
            benchmark::RegisterBenchmark((entry.first + label).c_str(), entry.second, &workload)
                ->Unit(benchmark::kMillisecond)
                ->Iterations(3)
                ->UseRealTime();
        }
    }
    zelkobench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("\n%-6s %14s %14s %7s %7s %14s %14s %7s\n", "text", "bare write MB/s",
                "SaveFile MB/s", "ratio", "target", "bare read MB/s", "LoadFile MB/s", "ratio");
    for (Workload const& workload : workloads) {
        double const megabytes = double(workload.contentBytes) / 1e6;
        double const bareWrite = reporter.find("bare_writer/" + workload.label + "/");
        double const save = reporter.find("SaveFile/" + workload.label + "/");
        double const bareRead = reporter.find("bare_reader/" + workload.label + "/");
        double const load = reporter.find("LoadFile/" + workload.label + "/");
        if (bareWrite > 0 && save > 0 && bareRead > 0 && load > 0) {
            std::printf("%-6s %14.0f %14.0f %7.2f %7s %14.0f %14.0f %7.2f\n",
                        workload.label.c_str(), megabytes / bareWrite, megabytes / save,
                        bareWrite / save, workload.label == "LF" ? "0.8" : "-",
                        megabytes / bareRead, megabytes / load, bareRead / load);
        }
        QFile::remove(workload.path);
        QFile::remove(workload.path + QStringLiteral(".bare"));
    }
    benchmark::Shutdown();
    return 0;
}
