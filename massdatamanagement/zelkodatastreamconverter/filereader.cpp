#include "filereader.h"

#include "moduletrace.h"

#include <cstring>

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
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
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
    m_readAheadBegin = m_readAheadEnd = 0;
}

bool FileReader::seek(long long position)
{
    clearFrameData();
    if (!m_file.seek(position)) {
        return false;
    }
    m_readAheadBegin = m_readAheadEnd = 0;
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
    qint64 const count = readFromFile(fillPosition(), missing);
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

namespace zelkodatastreamconverter {

// Serves a request from the read-ahead when it holds bytes (possibly fewer than asked for,
// like any short read), reads large requests straight into the destination, and refills
// the read-ahead otherwise. Returns the file's answer (0 at end, negative on error) when
// nothing is buffered.
qint64 FileReader::readFromFile(char* destination, qint64 count)
{
    if (m_readAheadBegin == m_readAheadEnd) {
        if (count >= ReadAheadSize / 2) {
            return m_file.read(destination, count);
        }
        if (m_readAhead.size() < ReadAheadSize) {
            m_readAhead.resize(ReadAheadSize);
        }
        qint64 const filled = m_file.read(m_readAhead.data(), ReadAheadSize);
        if (filled <= 0) {
            return filled;
        }
        m_readAheadBegin = 0;
        m_readAheadEnd = int(filled);
    }
    int const served = int(qMin<qint64>(count, m_readAheadEnd - m_readAheadBegin));
    std::memcpy(destination, m_readAhead.constData() + m_readAheadBegin, size_t(served));
    m_readAheadBegin += served;
    return served;
}

} // namespace zelkodatastreamconverter
