#include "xmlfile.h"

#include "clock.h"
#include "moduletrace.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
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

bool XmlFile::writeDocument(std::function<bool(QFile&)> const& write)
{
    QString const stagedPath = stagedFilePath(getDirectory());
    QFile staged(stagedPath);
    if (!staged.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Text)) {
        // Where the directory takes no staged file, the document is written in place as a
        // plain file would be; if the file cannot be had either, its own messages say why.
        QFile* const file = getFile();
        bool const written = file != nullptr && write(*file);
        closeFile(true);
        return written;
    }
    bool placed = write(staged) && flushToDisk(staged);
    staged.close();
    if (placed) {
        if (QFile* const current = getOpenFile()) {
            if (current->isOpen()) {
                current->close();
            }
            // rename() replaces the old document in one step: readers see the old or the new.
            placed = std::rename(QFile::encodeName(stagedPath).constData(),
                                 QFile::encodeName(current->fileName()).constData()) == 0;
            if (!placed) {
                trace().warning(
                    QStringLiteral("writeDocument: cannot replace %1: %2")
                        .arg(current->fileName(), QString::fromLocal8Bit(std::strerror(errno))),
                    __LINE__);
            }
        } else {
            placed = createFileFrom(stagedPath);
        }
    }
    // Left behind by a new name's link or a refused rename; gone already after a rename.
    QFile::remove(stagedPath);
    return placed;
}

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
