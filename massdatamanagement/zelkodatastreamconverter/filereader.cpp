#include "filereader.h"

#include "moduletrace.h"

namespace zelkodatastreamconverter {

namespace {
ModuleTrace const& moduleTrace()
{
    static ModuleTrace const trace(QStringLiteral("filereader"));
    return trace;
}
} // namespace

FileReader::FileReader(QString const& filePath) : FrameReader(filePath), m_file(filePath)
{
    if (!m_file.open(QIODevice::ReadOnly)) {
        setError(true);
    }
}

FileReader::~FileReader()
{
    close();
}

bool FileReader::isWorking()
{
    return FrameReader::isWorking() && m_file.isOpen();
}

void FileReader::close()
{
    if (m_file.isOpen()) {
        m_file.close();
        m_position = 0;
    }
}

bool FileReader::seek(long long position)
{
    clearFrameData();
    if (!m_file.seek(position)) {
        return false;
    }
    m_position = position;
    return true;
}

bool FileReader::readBuffer()
{
    int const missing = expectedSize() - filledSize();
    if (missing <= 0) {
        return true;
    }
    // One request; the file may deliver fewer bytes, and the next readFrame() asks again.
    qint64 const count = m_file.read(fillPosition(), missing);
    if (count > 0) {
        addFilled(int(count));
        m_position += count;
        return filledSize() >= expectedSize();
    }
    if (count == 0) {
        // The normal end of a recording, reported at the warning bit all the same.
        moduleTrace().warning(QStringLiteral("readBuffer(%1): end-of-file").arg(getName()),
                              __LINE__);
        close();
        return false;
    }
    moduleTrace().warning(
        QStringLiteral("readBuffer(%1): error (%2)").arg(getName()).arg(int(m_file.error())),
        __LINE__);
    setError(true);
    return false;
}

} // namespace zelkodatastreamconverter
