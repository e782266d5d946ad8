#include "xmlfile.h"

#include "clock.h"
#include "moduletrace.h"

#include <reportkit/text.h>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("xmlfile"));
    return instance;
}

} // namespace

XmlFile::XmlFile(FileInfoCallback* callback)
    : BinaryFile(QStringLiteral("NerikResultData"), QStringLiteral("DecodedText"), 0, callback)
{
    setFileName(QStringLiteral("NerikResultData_%1%2.xml"));
}

XmlFile::~XmlFile() = default;

void XmlFile::setChannel(int channel)
{
    m_channel = channel;
    m_channelSet = true;
}

void XmlFile::setPendingChanges(int delaySeconds)
{
    if (m_pendingChanges) {
        return;
    }
    setPendingChanges(Clock::currentDateTimeUtc().addSecs(delaySeconds));
}

void XmlFile::setPendingChanges(QDateTime const& due)
{
    if (m_pendingChanges) {
        return;
    }
    m_pendingChanges = true;
    m_dueTime = due;
}

bool XmlFile::hasExpiredPendingChanges(QDateTime const& now) const
{
    return m_pendingChanges && !(now < m_dueTime);
}

bool XmlFile::openFile(QFile* file)
{
    return file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
}

void XmlFile::sendFileInfo(bool complete)
{
    REPORTKIT::Text record;
    if (m_channelSet) {
        record.GetMetadata().GetDetail().SetChannel(m_channel);
    }
    deliverRecord(record, complete, trace());
}

} // namespace zelkodatastreamconverter
