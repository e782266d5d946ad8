#include "nerikresultdata.h"

#include "utf8xmlwriter.h"

#include <QFile>
#include <QXmlStreamReader>
#include <algorithm>
#include <memory>
#include <reportkit/xmlreading.h>

namespace NerikResultDataXml {

namespace {

QString const rootName = QStringLiteral("NerikResultData");
QString const formatVersion = QStringLiteral("1");

int highestId(PDUDataBlock const& block)
{
    int id = block.GetID();
    for (PDUDataBlock const* child : block.GetPDUDataBlocks()) {
        id = std::max(id, highestId(*child));
    }
    return id;
}

int highestId(QList<Transmission*> const& transmissions)
{
    int id = 0;
    for (Transmission const* transmission : transmissions) {
        for (DataBlock const* block : transmission->GetDataBlock()) {
            id = std::max(id, block->GetID());
        }
        for (PDUDataBlock const* block : transmission->GetPDUDataBlocks()) {
            id = std::max(id, highestId(*block));
        }
    }
    return id;
}

} // namespace

NerikResultData::NerikResultData() = default;

NerikResultData::~NerikResultData()
{
    qDeleteAll(m_transmissions);
}

void NerikResultData::AddTransmission(Transmission* transmission)
{
    if (transmission) {
        m_transmissions.append(transmission);
        // A transmission made in another document brings that document's block IDs; new IDs
        // must not repeat them.
        m_nextId = std::max(m_nextId, highestId(QList<Transmission*>{transmission}) + 1);
    }
}

int NerikResultData::GetNextID()
{
    return m_nextId++;
}

void NerikResultData::Clear()
{
    qDeleteAll(m_transmissions);
    m_transmissions.clear();
}

void NerikResultData::WriteXml(Utf8XmlWriter& writer) const
{
    WriteXml(writer, DataBlockFilter());
}

void NerikResultData::WriteXml(Utf8XmlWriter& writer, DataBlockFilter const& filter) const
{
    writer.writeStartElement(QLatin1String("NerikResultData"));
    writer.writeAttribute(QLatin1String("version"), formatVersion);
    writer.writeAttribute(QLatin1String("nextId"), m_nextId);
    for (Transmission const* transmission : m_transmissions) {
        transmission->WriteXml(writer, filter);
    }
    writer.writeEndElement();
}

bool NerikResultData::SaveFile(QFile& file)
{
    return Save(file, DataBlockFilter());
}

bool NerikResultData::SaveFile(QFile& file, DataBlockFilter const& filter)
{
    return Save(file, filter);
}

bool NerikResultData::Save(QIODevice& device, DataBlockFilter const& filter)
{
    m_errorText.clear();
    auto const deviceName = [&device]() {
        QFile const* file = qobject_cast<QFile const*>(&device);
        return file ? file->fileName() : QStringLiteral("device");
    };
    if (!device.isOpen() || !device.isWritable()) {
        m_errorText = QStringLiteral("%1: not open for writing").arg(deviceName());
        return false;
    }
    Utf8XmlWriter writer(device);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    WriteXml(writer, filter);
    writer.writeEndDocument();
    if (!writer.flush()) {
        m_errorText =
            QStringLiteral("%1: write failed: %2").arg(deviceName(), device.errorString());
        return false;
    }
    if (QFileDevice* file = qobject_cast<QFileDevice*>(&device)) {
        if (!file->flush()) {
            m_errorText =
                QStringLiteral("%1: write failed: %2").arg(deviceName(), file->errorString());
            return false;
        }
    }
    return true;
}

bool NerikResultData::load(QXmlStreamReader& reader, QString const& source)
{
    QString error;
    REPORTKIT::XmlReading in(reader, true, error);
    QList<Transmission*> transmissions;
    int nextId = 1;
    bool ok = REPORTKIT::XmlReading::readRoot(reader, rootName, error);
    if (ok) {
        bool present = false;
        QString version;
        ok = in.attributes({QStringLiteral("version"), QStringLiteral("nextId")}) &&
             in.requiredText(QStringLiteral("version"), version) &&
             in.optionalInt(QStringLiteral("nextId"), nextId, present);
        if (ok && version != formatVersion) {
            ok = in.fail(QStringLiteral("unsupported version \"%1\"").arg(version));
        }
        while (ok && in.nextChild()) {
            if (reader.name() != QLatin1String("Transmission")) {
                ok = in.fail(QStringLiteral("unexpected element <%1> in <NerikResultData>")
                                 .arg(reader.name().toString()));
                break;
            }
            auto transmission = std::make_unique<Transmission>();
            ok = transmission->ReadXml(reader, error);
            if (ok) {
                transmissions.append(transmission.release());
            }
        }
        ok = ok && in.ok() && REPORTKIT::XmlReading::readEnd(reader, error);
    }
    if (!ok) {
        qDeleteAll(transmissions);
        m_errorText = source.isEmpty() ? error : QStringLiteral("%1: %2").arg(source, error);
        return false;
    }
    Clear();
    m_transmissions = transmissions;
    // IDs must stay unique even when the stored counter is stale or missing.
    m_nextId = std::max({m_nextId, nextId, highestId(m_transmissions) + 1});
    m_errorText.clear();
    return true;
}

bool NerikResultData::LoadFile(QFile& file)
{
    if (!file.isOpen() && !file.open(QIODevice::ReadOnly)) {
        m_errorText =
            QStringLiteral("%1: cannot open: %2").arg(file.fileName(), file.errorString());
        return false;
    }
    if (!file.isReadable()) {
        m_errorText = QStringLiteral("%1: not open for reading").arg(file.fileName());
        return false;
    }
    QXmlStreamReader reader(&file);
    return load(reader, file.fileName());
}

bool NerikResultData::LoadFile(QString const& path)
{
    QFile file(path);
    return LoadFile(file);
}

bool NerikResultData::SetXmlString(QString const& xml)
{
    QXmlStreamReader reader(xml);
    return load(reader, QString());
}

bool NerikResultData::operator==(NerikResultData const& other) const
{
    if (m_transmissions.size() != other.m_transmissions.size()) {
        return false;
    }
    for (int i = 0; i < m_transmissions.size(); ++i) {
        if (*m_transmissions[i] != *other.m_transmissions[i]) {
            return false;
        }
    }
    return true;
}

} // namespace NerikResultDataXml
