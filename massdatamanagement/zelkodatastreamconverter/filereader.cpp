#include "filereader.h"

#include "moduletrace.h"

namespace zelkodatastreamconverter {

namespace {
constexpr int ReadAheadSize = 1 << 18;

ModuleTrace const& moduleTrace()
{
    static ModuleTrace const trace(QStringLiteral("filereader"));
    return trace;
}
} // namespace

FileReader::FileReader(QString const& filePath) : FrameReader(filePath), m_file(filePath)
{
    // Unbuffered: the reader keeps its own, larger read-ahead.
    m_open = m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    if (!m_open) {
        setError(true);
    }
}

FileReader::~FileReader()
{
    close();
}

bool FileReader::isWorking()
{
    return FrameReader::isWorking() && m_open;
}

void FileReader::close()
{
    if (m_open) {
        m_open = false;
        m_file.close();
        m_filePosition = 0;
    }
    clearReadAhead();
}

bool FileReader::seek(long long position)
{
    clearFrameData();
    if (!m_file.seek(position)) {
        return false;
    }
    clearReadAhead();
    m_filePosition = position;
    return true;
}

bool FileReader::readBuffer()
{
    int const missing = expectedSize() - filledSize();
    if (missing <= 0) {
        return true;
    }
    // One request; the file may deliver fewer bytes, and the next readFrame() asks again.
    qint64 const count = readFromFile(fillPosition(), missing);
    if (count > 0) {
        addFilled(int(count));
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

namespace zelkodatastreamconverter {

// Serves a request from the read-ahead when it holds bytes (possibly fewer than asked for,
// like any short read), reads large requests straight into the destination, and refills
// the read-ahead otherwise. Returns the file's answer (0 at end, negative on error) when
// nothing is buffered.
qint64 FileReader::readFromFile(char* destination, qint64 count)
{
    if (readAheadAvailable() == 0) {
        if (count >= ReadAheadSize / 2) {
            qint64 const direct = m_file.read(destination, count);
            m_filePosition += qMax<qint64>(direct, 0);
            return direct;
        }
        qint64 const filled = m_file.read(readAheadBlock(ReadAheadSize), ReadAheadSize);
        if (filled <= 0) {
            return filled;
        }
        setReadAheadFilled(int(filled));
        m_filePosition += filled;
    }
    return takeReadAhead(destination, int(qMin<qint64>(count, ReadAheadSize)));
}

} // namespace zelkodatastreamconverter
