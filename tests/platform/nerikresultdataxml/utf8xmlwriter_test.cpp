// The writer against QXmlStreamWriter given the same calls: random call sequences over awkward
// names, attribute values and texts must come out byte for byte alike.
#include <QBuffer>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>
#include <nerikresultdataxml/utf8xmlwriter.h>
#include <nerikresultdataxml/xmltext.h>
#include <random>
#include <reportkit/xmlreading.h>
#include <support/qstringprinter.h>

using NerikResultDataXml::Utf8XmlWriter;
using NerikResultDataXml::XmlText;

namespace {

QString units(std::initializer_list<ushort> codes)
{
    QString text;
    for (ushort code : codes) {
        text.append(QChar(code));
    }
    return text;
}

// Values an attribute may hold; the controls and noncharacters are dropped with an error by
// both writers.
QString const attributeValues[] = {QString(),
                                   QStringLiteral("plain"),
                                   QStringLiteral("q\"<>&'"),
                                   QStringLiteral("\t\n\r "),
                                   QStringLiteral("a\vb\x01"),
                                   units({0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFD}),
                                   units({0xD83D, 0xDE00, 0xDBFF, 0xDFFF, 0xFFFE, 0xFFFF, 0x41})};

// Texts that need no escaping, so that QXmlStreamWriter::writeDTD() writes them alike: runs
// longer and shorter than sixteen units, non-ASCII at every position of a run.
QString plainText(std::mt19937& random)
{
    static ushort const pool[] = {'a', ' ', '\t', '\n', 0x7F, 0xE9, 0x3B1, 0x20AC, 0xFFFD};
    QString text;
    int const length = int(random() % 40);
    for (int i = 0; i < length; ++i) {
        if (random() % 9 == 0) {
            text.append(QChar(0xD800 + int(random() % 0x400)));
            text.append(QChar(0xDC00 + int(random() % 0x400)));
        } else {
            text.append(QChar(pool[random() % (random() % 3 == 0 ? 9 : 2)]));
        }
    }
    return text;
}

struct Writers
{
    Writers() : buffer(&expected)
    {
        buffer.open(QIODevice::WriteOnly);
        reference.setDevice(&buffer);
    }
    QByteArray expected;
    QBuffer buffer;
    QXmlStreamWriter reference;
    QByteArray written;
    Utf8XmlWriter writer{written};
};

void randomCall(Writers& w, std::mt19937& random)
{
    static char const* const names[] = {"a", "Transmission", "b"};
    QLatin1String const name(names[random() % 3]);
    switch (random() % 10) {
    case 0:
        w.reference.writeStartDocument();
        w.writer.writeStartDocument();
        break;
    case 1:
    case 2:
        w.reference.writeStartElement(name);
        w.writer.writeStartElement(name);
        break;
    case 3:
        w.reference.writeEmptyElement(name);
        w.writer.writeEmptyElement(name);
        break;
    case 4: {
        QString const& value = attributeValues[random() % 7];
        w.reference.writeAttribute(name, value);
        w.writer.writeAttribute(name, value);
        break;
    }
    case 5: {
        qint64 const value = qint64(random()) - qint64(random()) * 4096;
        w.reference.writeAttribute(name, QString::number(value));
        w.writer.writeAttribute(name, value);
        break;
    }
    case 6:
    case 7:
        w.reference.writeEndElement();
        w.writer.writeEndElement();
        break;
    case 8: {
        bool const on = random() % 2 == 0;
        w.reference.setAutoFormatting(on);
        w.writer.setAutoFormatting(on);
        break;
    }
    default: {
        QString const text = plainText(random);
        bool const formatting = w.reference.autoFormatting();
        w.reference.setAutoFormatting(false);
        if (!text.isEmpty()) {
            w.reference.writeDTD(text);
        }
        w.reference.setAutoFormatting(formatting);
        w.writer.writeText(text);
        break;
    }
    }
}

class AgainstQXmlStreamWriter : public testing::TestWithParam<int>
{
};

TEST_P(AgainstQXmlStreamWriter, SameBytesForTheSameCalls)
{
    std::mt19937 random{unsigned(GetParam())};
    Writers w;
    for (int call = 0; call < 60; ++call) {
        randomCall(w, random);
    }
    if (random() % 2 == 0) {
        w.reference.writeEndDocument();
        w.writer.writeEndDocument();
    }
    EXPECT_EQ(w.writer.flush(), !w.reference.hasError());
    EXPECT_EQ(w.written, w.expected);
}

INSTANTIATE_TEST_SUITE_P(Seeds, AgainstQXmlStreamWriter, testing::Range(1, 61));

TEST(Utf8XmlWriter, LoneSurrogateInAnAttributeIsAnError)
{
    for (ushort lone : {0xD800, 0xDFFF}) {
        QByteArray written;
        Utf8XmlWriter writer(written);
        writer.writeEmptyElement(QLatin1String("a"));
        writer.writeAttribute(QLatin1String("v"), units({'x', lone, 'y'}));
        EXPECT_FALSE(writer.flush());
        EXPECT_EQ(written, "<a v=\"xy\"");
    }
}

// Every form of element text at every offset around the sixteen-unit runs, in texts long
// enough for several buffer fills: what is written reads back as it was.
TEST(Utf8XmlWriter, LongAwkwardTextReadsBackUnchanged)
{
    static ushort const pool[] = {'a',  'a',  'a',    '<',    '>',    '&',    '\r',  '\n',
                                  0x01, 0xE9, 0xD83D, 0xDE00, 0xDC00, 0xFFFE, 0x20AC};
    std::mt19937 random(7);
    QString text;
    for (int i = 0; i < 300000; ++i) {
        text.append(QChar(pool[random() % (sizeof pool / sizeof pool[0])]));
    }
    text.append(QChar(0xD800)); // a lone high surrogate at the very end
    QByteArray written;
    {
        Utf8XmlWriter writer(written);
        XmlText::writeTextElement(writer, QLatin1String("t"), text);
    }
    QXmlStreamReader reader(written);
    reader.readNextStartElement();
    QString error;
    REPORTKIT::XmlReading in(reader, true, error);
    QString read;
    ASSERT_TRUE(XmlText::readText(reader, in, read)) << error.toStdString();
    EXPECT_TRUE(read == text);
}

// A device that refuses its first write and takes every later one.
class FailingOnce : public QIODevice
{
public:
    FailingOnce() { open(QIODevice::WriteOnly); }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(char const*, qint64 size) override { return m_refused++ ? size : -1; }

private:
    int m_refused = 0;
};

// Once a write has failed, later output is dropped rather than written after a gap.
TEST(Utf8XmlWriter, AFailedWriteStaysAnError)
{
    FailingOnce device;
    Utf8XmlWriter writer(device);
    writer.writeStartElement(QLatin1String("t"));
    writer.writeText(QString(3 << 20, QLatin1Char('a')));
    writer.writeEndElement();
    EXPECT_FALSE(writer.flush());
    EXPECT_TRUE(writer.hasError());
}

// Slices of base64 end on whole byte triples: only the very end is padded.
TEST(Utf8XmlWriter, Base64AsQByteArrayWritesIt)
{
    QByteArray data;
    for (int i = 0; i < 3000000; ++i) {
        data.append(char(i * 7 + i / 251));
    }
    for (int size : {0, 1, 2, 3, 4, 5, 3000000 - 1}) {
        QByteArray written;
        {
            Utf8XmlWriter writer(written);
            writer.writeStartElement(QLatin1String("d"));
            writer.writeBase64(data.constData(), size);
            writer.writeEndElement();
        }
        QByteArray const base64 = data.left(size).toBase64();
        EXPECT_EQ(written, size == 0 ? QByteArray("<d/>") : "<d>" + base64 + "</d>") << size;
    }
}

} // namespace
