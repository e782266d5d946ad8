#include "sampledocument.h"

#include <QFile>
#include <QRegExp>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <support/golden.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/textrows.h>

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

struct TextRow
{
    char const* name;
    QString text;
};

std::vector<TextRow> hostileTexts()
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
        {"blanks tabs and line feeds only", QStringLiteral("\t\n  \n\t ")},
        {"markup CDATA end and a false escape",
         QStringLiteral("<a href=\"x\">&amp;']]><c u=\"0001\"/>&#13;")},
        {"carriage returns and every C0 control", QStringLiteral("a\rb\r\nc\n\rd\r") + allControls},
        {"lone surrogates and noncharacters", QString(QChar(0xDE00)) + QChar(0xD83D) +
                                                  QLatin1Char('x') + QChar(0xFFFE) + QChar(0xFFFF) +
                                                  QChar(0xD83D)},
    };
}

using HostileText = testing::TestWithParam<TextRow>;

TEST_P(HostileText, SurvivesInEverySlotOfStringAndFile)
{
    auto const original = sample::richDocument(GetParam().text);
    QString const xml = original->GetXmlString();
    NerikResultData loaded;
    ASSERT_TRUE(loaded.SetXmlString(xml)) << loaded.GetErrorText().toStdString();
    EXPECT_TRUE(loaded == *original);
    EXPECT_EQ(loaded.GetTransmission()[0]->GetPDUDataBlocks()[0]->GetName(), GetParam().text);
    EXPECT_EQ(zelkotest::validateXmlText(xml, schema), QString());
    // The file path goes through the UTF-8 encoder: it must read back the same.
    NerikResultData fromFile;
    ASSERT_TRUE(fromFile.SetXmlString(savedText(*original)));
    EXPECT_TRUE(fromFile == *original);
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileText, testing::ValuesIn(hostileTexts()),
                         zelkotest::RowName());

using Equality = testing::TestWithParam<zelkotest::TextRow>;

// Each row changes one item of the stored text: the document read from it must differ.
TEST_P(Equality, NoticesTheChangedItem)
{
    auto const original = sample::richDocument();
    QString xml = original->GetXmlString();
    int const at = xml.indexOf(GetParam().input);
    ASSERT_GE(at, 0);
    xml.replace(at, GetParam().input.size(), GetParam().expected);
    NerikResultData changed;
    ASSERT_TRUE(changed.SetXmlString(xml)) << changed.GetErrorText().toStdString();
    EXPECT_FALSE(changed == *original);
    EXPECT_FALSE(*original == changed);
}

INSTANTIATE_TEST_SUITE_P(Items, Equality,
                         testing::ValuesIn(zelkotest::readTextRows(
                             QStringLiteral("nerikresultdataxml/changed-items.rows"))),
                         zelkotest::TextRowName());

// The saved text matches the checked-in document (ZELKO_REGENERATE_GOLDEN=1 rewrites it), is
// valid, and loads back equal.
TEST(NerikResultData, GoldenDocumentIsStable)
{
    QString const xml = sample::richDocument()->GetXmlString();
    EXPECT_EQ(zelkotest::compareWithGolden(xml.toUtf8(), "nerikresultdataxml/rich-document.xml"),
              QString());
    EXPECT_EQ(savedText(*sample::richDocument()), QString(xml).remove(QRegExp("^<\\?xml[^>]*>")));
    QString const golden =
        QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/nerikresultdataxml/rich-document.xml");
    EXPECT_EQ(zelkotest::validateXmlFile(golden, schema), QString());
    NerikResultData loaded;
    ASSERT_TRUE(loaded.LoadFile(golden)) << loaded.GetErrorText().toStdString();
    EXPECT_TRUE(loaded == *sample::richDocument());
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

using BadInput = testing::TestWithParam<zelkotest::TextRow>;

TEST_P(BadInput, IsRefusedWithPositionAndLeavesDocumentUnchanged)
{
    auto document = sample::richDocument();
    int const nextId = document->PeekNextID();
    EXPECT_FALSE(document->SetXmlString(GetParam().input));
    EXPECT_EQ(document->GetErrorText(), GetParam().expected);
    EXPECT_TRUE(*document == *sample::richDocument());
    EXPECT_EQ(document->PeekNextID(), nextId);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BadInput,
    testing::ValuesIn(zelkotest::readTextRows(QStringLiteral("nerikresultdataxml/refused.rows"))),
    zelkotest::TextRowName());

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

TEST(NerikResultData, FileProblemsAreReportedNotThrown)
{
    NerikResultData document;
    EXPECT_FALSE(document.LoadFile(QStringLiteral("/nonexistent/NerikResultData.xml")));
    EXPECT_TRUE(document.GetErrorText().startsWith(
        QLatin1String("/nonexistent/NerikResultData.xml: cannot open: ")));

    QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("doc.xml")));
    EXPECT_FALSE(document.SaveFile(file));
    EXPECT_EQ(document.GetErrorText(), file.fileName() + QLatin1String(": not open for writing"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(document.LoadFile(file));
    EXPECT_EQ(document.GetErrorText(), file.fileName() + QLatin1String(": not open for reading"));

    // A small document fails only when the file's buffer is flushed, a big one on writing.
    for (int length : {1, 20000}) {
        auto const sample = sample::richDocument(QString(length, QChar('x')));
        QFile full(QStringLiteral("/dev/full"));
        if (full.open(QIODevice::WriteOnly)) {
            EXPECT_FALSE(sample->SaveFile(full)) << length;
            EXPECT_TRUE(sample->GetErrorText().startsWith(QLatin1String("/dev/full: write failed")))
                << sample->GetErrorText().toStdString();
        }
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

TEST(NerikResultData, IdsStayUniqueAcrossTakeOverReloadAndClear)
{
    NerikResultData document;
    ASSERT_TRUE(document.SetXmlString(QStringLiteral("<NerikResultData version='1'/>")));
    document.AddTransmission(new Transmission);
    EXPECT_EQ(document.PeekNextID(), 1) << "nothing taken over, nothing skipped";

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
    document.AddTransmission(transmission);
    EXPECT_EQ(document.GetNextID(), 10);
    EXPECT_EQ(document.GetNextID(), 11);

    // A stored counter that lags behind the IDs in the file must not cause duplicates.
    QString xml = document.GetXmlString();
    ASSERT_TRUE(xml.contains(QLatin1String("nextId=\"12\"")));
    xml.replace(QLatin1String("nextId=\"12\""), QLatin1String("nextId=\"2\""));
    NerikResultData reloaded;
    ASSERT_TRUE(reloaded.SetXmlString(xml)) << reloaded.GetErrorText().toStdString();
    EXPECT_EQ(reloaded.GetNextID(), 10);

    document.Clear();
    EXPECT_TRUE(document.GetTransmission().isEmpty());
    EXPECT_EQ(document.GetNextID(), 12) << "Clear keeps the counter";
}

} // namespace
