#include "sampledocument.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegExp>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/nerikresultdataexception.h>
#include <support/schemavalidator.h>

using namespace NerikResultDataXml;

namespace {

QString const schema = QStringLiteral("nerikresultdata.xsd");

/// What SaveFile writes, without the XML declaration.
QString savedText(NerikResultData& document)
{
    QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("doc.xml")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Text));
    EXPECT_TRUE(document.SaveFile(file)) << document.GetErrorText().toStdString();
    file.close();
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).remove(QRegExp("^<\\?xml[^>]*>"));
}

struct HostileText
{
    char const* name;
    QString text;
};

std::vector<HostileText> hostileTexts()
{
    QString allControls;
    for (ushort u = 0; u < 0x20; ++u) {
        allControls.append(QChar(u));
    }
    // Long texts are written in pieces of 65536 code units: a surrogate pair and escapes
    // right at the seams must come through whole.
    QString const atSeam = QString(65535, QLatin1Char('a')) +
                           QString::fromUtf8("\xF0\x9F\x98\x80") +
                           QString(65533, QLatin1Char('b')) + QLatin1String("\r\x01<") +
                           QString(70000, QLatin1Char('c'));
    return {
        {"surrogate pair and escapes at the seams of a long text", atSeam},
        {"empty", QStringLiteral("")},
        {"markup characters", QStringLiteral("<a href=\"x\">&amp;'</a>")},
        {"lone CDATA end", QStringLiteral("]]>")},
        {"carriage returns", QStringLiteral("a\rb\r\nc\n\rd\r")},
        {"tabs and line feeds only", QStringLiteral("\t\n \n\t")},
        {"leading and trailing blanks", QStringLiteral("  x  ")},
        {"every C0 control", allControls},
        {"noncharacters FFFE FFFF", QString(QChar(0xFFFE)) + QChar(0xFFFF) + QChar(0xFFFD)},
        {"lone high surrogate", QString(QChar(0xD83D)) + QLatin1String("x")},
        {"lone low surrogate at end", QStringLiteral("x") + QChar(0xDE00)},
        {"reversed surrogate pair", QString(QChar(0xDE00)) + QChar(0xD83D)},
        {"right-to-left with marks", QString::fromUtf8("\u202B\u0645\u0631\u062D\u0628\u0627\u202C "
                                                       "\u05E9\u05DC\u05D5\u05DD")},
        {"looks like an escape", QStringLiteral("<c u=\"0001\"/>&#13;")},
        {"DEL and C1 controls", QString(QChar(0x7F)) + QChar(0x85) + QChar(0x9F)},
    };
}

} // namespace

TEST(NerikResultData, EqualityNoticesEveryKindOfDifference)
{
    auto const original = sample::richDocument();
    using Change = std::function<void(NerikResultData&)>;
    auto first = [](NerikResultData& d) { return d.GetTransmission()[0]; };
    auto block = [&](NerikResultData& d) { return first(d)->GetDataBlock()[0]; };
    std::vector<std::pair<char const*, Change>> const changes = {
        {"stop time", [&](NerikResultData& d) { first(d)->SetStopTime(QDateTime()); }},
        {"info item", [&](NerikResultData& d) { first(d)->GetInfos()[0]->SetItem("x", "y"); }},
        {"raw content", [&](NerikResultData& d) { block(d)->AppendRawData(QChar(0)); }},
        {"time stamp raw position",
         [&](NerikResultData& d) { block(d)->GetTimeStamp()[0].SetRawPosition(9); }},
        {"user data covered text",
         [&](NerikResultData& d) { block(d)->GetUserData()[0]->coveredText += "!"; }},
        {"rtl flag",
         [&](NerikResultData& d) { first(d)->GetDataBlock()[1]->SetContentDirectionRTL(false); }},
        {"PDU block name",
         [&](NerikResultData& d) { first(d)->GetPDUDataBlocks()[0]->SetName("other"); }},
        {"payload bits",
         [&](NerikResultData& d) {
             auto& p = first(d)->GetPDUDataBlocks()[0]->GetPayload();
             p.SetData(p.GetData(), p.GetDataElements(), 2);
         }},
        {"grandchild field",
         [&](NerikResultData& d) {
             first(d)
                 ->GetPDUDataBlocks()[0]
                 ->GetPDUDataBlocks()[0]
                 ->GetPDUDataBlocks()[0]
                 ->GetFields()[0]
                 .SetValue("1");
         }},
        {"missing transmission", [](NerikResultData& d) { delete d.GetTransmission().takeLast(); }},
    };
    for (auto const& change : changes) {
        auto copy = sample::richDocument();
        ASSERT_TRUE(*copy == *original);
        change.second(*copy);
        EXPECT_FALSE(*copy == *original) << change.first;
    }
}

TEST(NerikResultData, HostileTextSurvivesInEverySlot)
{
    for (HostileText const& hostile : hostileTexts()) {
        SCOPED_TRACE(hostile.name);
        auto const original = sample::richDocument(hostile.text);
        QString const xml = original->GetXmlString();
        NerikResultData loaded;
        ASSERT_TRUE(loaded.SetXmlString(xml)) << loaded.GetErrorText().toStdString();
        EXPECT_TRUE(loaded == *original);
        EXPECT_EQ(loaded.GetTransmission()[0]->GetPDUDataBlocks()[0]->GetName(), hostile.text);
        EXPECT_EQ(zelkotest::validateXmlText(xml, schema), QString());
        // The file path goes through the UTF-8 encoder: it must read back the same.
        NerikResultData fromFile;
        ASSERT_TRUE(fromFile.SetXmlString(savedText(*original)));
        EXPECT_TRUE(fromFile == *original);
    }
}

// The saved file matches the checked-in document (ZELKO_REGENERATE_GOLDEN=1 rewrites it), is
// valid, and loads back equal.
TEST(NerikResultData, GoldenDocumentIsStable)
{
    QString const golden =
        QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/nerikresultdataxml/rich-document.xml");
    QString const xml = sample::richDocument()->GetXmlString();
    if (qEnvironmentVariableIntValue("ZELKO_REGENERATE_GOLDEN") == 1) {
        QFile file(golden);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(xml.toUtf8());
    }
    QFile file(golden);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << golden.toStdString();
    EXPECT_EQ(QString::fromUtf8(file.readAll()), xml);
    EXPECT_EQ(savedText(*sample::richDocument()), QString(xml).remove(QRegExp("^<\\?xml[^>]*>")));
    EXPECT_EQ(zelkotest::validateXmlFile(golden, schema), QString());
    NerikResultData loaded;
    ASSERT_TRUE(loaded.LoadFile(golden)) << loaded.GetErrorText().toStdString();
    EXPECT_TRUE(loaded == *sample::richDocument());
    EXPECT_TRUE(loaded.GetErrorText().isEmpty());
}

TEST(NerikResultData, TransmissionStandsAloneAsDocument)
{
    auto const document = sample::richDocument(QString(QChar(0x1)));
    Transmission const& original = *document->GetTransmission()[0];
    QString const xml = original.GetXmlString();
    EXPECT_EQ(zelkotest::validateXmlText(xml, schema), QString());
    Transmission read;
    QString error;
    ASSERT_TRUE(read.SetXmlString(xml, error)) << error.toStdString();
    EXPECT_TRUE(read == original);
    EXPECT_FALSE(read.SetXmlString(QStringLiteral("<Transmission><Bogus/></Transmission>"), error));
    EXPECT_EQ(error,
              QStringLiteral("line 1, column 22: unexpected element <Bogus> in <Transmission>"));
    EXPECT_TRUE(read == original) << "a refused text leaves the transmission as it was";
}

TEST(NerikResultData, BadInputIsRefusedWithPositionAndLeavesDocumentUnchanged)
{
    struct Case
    {
        char const* name;
        char const* xml;
        char const* error;
    };
    Case const cases[] = {
        {"empty text", "", "line 1, column 0: Premature end of document."},
        {"not XML", "hello", "line 1, column 1: Start tag expected."},
        {"wrong root", "<Results/>",
         "line 1, column 10: root element is <Results>, expected <NerikResultData>"},
        {"missing version", "<NerikResultData/>",
         "line 1, column 18: <NerikResultData> lacks the attribute version"},
        {"future version", "<NerikResultData version='2'/>",
         "line 1, column 30: unsupported version \"2\""},
        {"id not a number",
         "<NerikResultData version='1'><Transmission><DataBlock id='x' "
         "channel='1'><Content/></DataBlock></Transmission></NerikResultData>",
         "line 1, column 73: id is not an integer: \"x\""},
        {"negative PDU type",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' "
         "type='-1'/></Transmission></NerikResultData>",
         "line 1, column 75: type is not an unsigned integer: \"-1\""},
        {"bad time",
         "<NerikResultData version='1'><Transmission startTime='yesterday'/></NerikResultData>",
         "line 1, column 66: startTime is not a date-time: \"yesterday\""},
        {"raw content of odd length",
         "<NerikResultData version='1'><Transmission><DataBlock id='1' "
         "channel='1'><Content/><RawContent>QUJD</RawContent></DataBlock></Transmission></"
         "NerikResultData>",
         "line 1, column 112: <RawContent> is not base64 of UTF-16 code units"},
        {"escape with three digits",
         "<NerikResultData version='1'><Transmission><DataBlock id='1' channel='1'><Content>a<c "
         "u='001'/></Content></DataBlock></Transmission></NerikResultData>",
         "line 1, column 95: <c> needs exactly the attribute u with four hex digits"},
        {"block without content",
         "<NerikResultData version='1'><Transmission><DataBlock id='1' "
         "channel='1'/></Transmission></NerikResultData>",
         "line 1, column 74: <DataBlock> lacks <Content>"},
        {"children out of order",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' "
         "type='0'/><Info/></Transmission></NerikResultData>",
         "line 1, column 81: unexpected element <Info> in <Transmission>"},
        {"unknown attribute", "<NerikResultData version='1' colour='red'/>",
         "line 1, column 43: unknown attribute colour of <NerikResultData>"},
        {"name given twice",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' type='0' name='a' "
         "name64='YQA='/></Transmission></NerikResultData>",
         "line 1, column 97: both name and name64 given"},
        {"bad field in a PDU block",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' type='0'><Field "
         "colour='x'/></PDUDataBlock></Transmission></NerikResultData>",
         "line 1, column 92: unknown attribute colour of <Field>"},
        {"bad user data in a PDU block",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' "
         "type='0'><UserData/></PDUDataBlock></Transmission></NerikResultData>",
         "line 1, column 84: <UserData> lacks the attribute start"},
        {"unknown attribute of a PDU block",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' type='0' "
         "colour='red'/></Transmission></NerikResultData>",
         "line 1, column 87: unknown attribute colour of <PDUDataBlock>"},
        {"second root", "<NerikResultData version='1'/><NerikResultData version='1'/>",
         "line 1, column 60: Extra content at end of document."},
        {"payload data not base64",
         "<NerikResultData version='1'><Transmission><PDUDataBlock id='1' type='0'><Payload><Data "
         "elements='1' bits='8'>*</Data></Payload></PDUDataBlock></Transmission></NerikResultData>",
         "line 1, column 118: <Data> is not base64"},
    };
    for (Case const& c : cases) {
        auto document = sample::richDocument();
        int const nextId = document->PeekNextID();
        EXPECT_FALSE(document->SetXmlString(QString::fromUtf8(c.xml))) << c.name;
        EXPECT_EQ(document->GetErrorText(), QString::fromUtf8(c.error)) << c.name;
        EXPECT_TRUE(*document == *sample::richDocument()) << c.name;
        EXPECT_EQ(document->PeekNextID(), nextId) << c.name;
    }
}

TEST(NerikResultData, NestingIsLimitedNotAStackOverflow)
{
    auto const nested = [](int depth) {
        return QStringLiteral("<NerikResultData version='1'><Transmission>") +
               QStringLiteral("<PDUDataBlock id='1' type='0'>").repeated(depth) +
               QStringLiteral("</PDUDataBlock>").repeated(depth) +
               QStringLiteral("</Transmission></NerikResultData>");
    };
    NerikResultData document;
    EXPECT_TRUE(document.SetXmlString(nested(PDUDataBlock::MaxNesting)))
        << document.GetErrorText().toStdString();
    EXPECT_FALSE(document.SetXmlString(nested(PDUDataBlock::MaxNesting + 1)));
    EXPECT_TRUE(document.GetErrorText().endsWith(
        QLatin1String(": PDU data blocks nested deeper than 200 levels")));
    EXPECT_FALSE(document.SetXmlString(nested(100000)));
    EXPECT_EQ(document.GetTransmission().size(), 1) << "the earlier document stays";
}

TEST(NerikResultData, EveryTruncationIsRefused)
{
    QString const xml = sample::richDocument(QStringLiteral("a\x01]]>\r"))->GetXmlString();
    int const complete =
        xml.lastIndexOf(QLatin1String("</NerikResultData>")) + int(qstrlen("</NerikResultData>"));
    NerikResultData document;
    for (int length = 0; length < complete; ++length) {
        ASSERT_FALSE(document.SetXmlString(xml.left(length))) << "length " << length;
        ASSERT_TRUE(document.GetErrorText().startsWith(QLatin1String("line "))) << length;
        ASSERT_TRUE(document.GetTransmission().isEmpty());
    }
    EXPECT_TRUE(document.SetXmlString(xml.left(complete)));
}

TEST(NerikResultData, DamagedBytesNeverCrashAndWhatLoadsSavesCleanly)
{
    QByteArray const clean = sample::richDocument()->GetXmlString().toUtf8();
    QRandomGenerator random(7);
    int loadedCount = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray damaged = clean;
        int const hits = 1 + int(random.bounded(4));
        for (int i = 0; i < hits; ++i) {
            damaged[int(random.bounded(damaged.size()))] = char(random.bounded(256));
        }
        NerikResultData document;
        if (document.SetXmlString(QString::fromUtf8(damaged))) {
            ++loadedCount;
            NerikResultData again;
            ASSERT_TRUE(again.SetXmlString(document.GetXmlString())) << round;
            ASSERT_TRUE(again == document) << round;
        } else {
            ASSERT_TRUE(document.GetErrorText().contains(QLatin1String(", column "))) << round;
        }
    }
    EXPECT_LT(loadedCount, 300) << "damage must be noticed at least sometimes";
}

TEST(NerikResultData, FileProblemsAreReportedNotThrown)
{
    NerikResultData document;
    EXPECT_FALSE(document.LoadFile(QStringLiteral("/nonexistent/NerikResultData.xml")));
    EXPECT_TRUE(document.GetErrorText().startsWith(
        QLatin1String("/nonexistent/NerikResultData.xml: cannot open: ")));

    QTemporaryDir directory;
    QFile closed(directory.filePath(QStringLiteral("closed.xml")));
    EXPECT_FALSE(document.SaveFile(closed));
    EXPECT_EQ(document.GetErrorText(), closed.fileName() + QLatin1String(": not open for writing"));

    auto const big = sample::richDocument(QString(20000, QChar('x')));
    QFile full(QStringLiteral("/dev/full"));
    if (full.open(QIODevice::WriteOnly)) {
        EXPECT_FALSE(big->SaveFile(full));
        EXPECT_TRUE(big->GetErrorText().startsWith(QLatin1String("/dev/full: write failed")))
            << big->GetErrorText().toStdString();
    }
}

TEST(NerikResultData, FilterLeavesOutRejectedTextBlocksOnlyInTheFile)
{
    auto document = sample::richDocument();
    QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("filtered.xml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(
        document->SaveFile(file, [](DataBlock const& block) { return block.GetChannel() == 7; }));
    file.close();
    EXPECT_EQ(zelkotest::validateXmlFile(file.fileName(), schema), QString());
    NerikResultData loaded;
    ASSERT_TRUE(loaded.LoadFile(file.fileName()));
    ASSERT_EQ(loaded.GetTransmission()[0]->GetDataBlock().size(), 1);
    EXPECT_EQ(loaded.GetTransmission()[0]->GetDataBlock()[0]->GetChannel(), 7);
    EXPECT_EQ(document->GetTransmission()[0]->GetDataBlock().size(), 2);
}

TEST(NerikResultData, IdsStayUniqueAcrossTransmissionsClearAndReload)
{
    NerikResultData document;
    QSet<int> seen;
    for (int t = 0; t < 3; ++t) {
        auto* transmission = new Transmission;
        for (int b = 0; b < 4; ++b) {
            auto* block = new DataBlock(b);
            block->SetID(document.GetNextID());
            EXPECT_FALSE(seen.contains(block->GetID()));
            seen.insert(block->GetID());
            block->SetTimeStamp(sample::at(1, t, b));
            transmission->AddDataBlock(block);
        }
        document.AddTransmission(transmission);
    }
    EXPECT_EQ(document.PeekNextID(), 13);

    // A stored counter that lags behind the IDs in the file must not cause duplicates.
    QString xml = document.GetXmlString();
    xml.replace(QLatin1String("nextId=\"13\""), QLatin1String("nextId=\"2\""));
    NerikResultData reloaded;
    ASSERT_TRUE(reloaded.SetXmlString(xml)) << reloaded.GetErrorText().toStdString();
    EXPECT_EQ(reloaded.GetNextID(), 13);
    EXPECT_EQ(reloaded.GetNextID(), 14);

    document.Clear();
    EXPECT_EQ(document.GetNextID(), 13) << "Clear keeps the counter";
}

TEST(NerikResultData, TakingOverATransmissionMovesTheCounterPastItsIds)
{
    // A transmission filled in another document, with a nested PDU block of the highest ID.
    auto* transmission = new Transmission;
    auto* block = new DataBlock(1);
    block->SetID(4);
    transmission->AddDataBlock(block);
    auto* parent = new PDUDataBlock;
    parent->SetID(2);
    auto* child = new PDUDataBlock;
    child->SetID(9);
    parent->AddPDUDataBlock(child);
    transmission->AddPDUDataBlock(parent);

    NerikResultData document;
    document.AddTransmission(transmission);
    EXPECT_EQ(document.GetNextID(), 10);
    document.AddTransmission(new Transmission);
    EXPECT_EQ(document.GetNextID(), 11) << "an empty transmission leaves the counter alone";
    EXPECT_TRUE(document.GetXmlString().contains(QLatin1String("nextId=\"12\"")));
}
