#pragma once

#include <QFile>
#include <massdatamanagement/zelkodatastreamconverter/framereader.h>

namespace zelkodatastreamconverter {

/// A FrameReader on a recording file.
///
/// The file is opened read-only on construction; if that fails the reader is not working
/// from the start (no message). End of file is traced as "readBuffer(<path>): end-of-file"
/// and closes the file, so isWorking() turns false; a read error is traced as
/// "readBuffer(<path>): error (<code>)" and makes the reader fail.
class FileReader : public FrameReader
{
public:
    explicit FileReader(QString const& filePath);
    ~FileReader() override;

    bool isWorking() override;
    void close() override;

    /// Forgets buffered bytes and moves to the byte position; false, with the position
    /// unchanged, when the file refuses. The next readFrame() starts a header there.
    bool seek(long long position);
    /// Bytes consumed from the file so far (0 after close).
    long long getPosition() const { return m_position; }
    QFile const& getFile() const { return m_file; }

protected:
    bool readBuffer() override;

private:
    qint64 readFromFile(char* destination, qint64 count);

    QFile m_file;
    qint64 m_position = 0;
    // Read-ahead in large blocks: the frame logic asks for a header, then a body, so many
    // small requests would otherwise each cost a system call or a pass through a small
    // device buffer. Only bytes handed to the frame logic count in the position.
    QByteArray m_readAhead;
    int m_readAheadBegin = 0;
    int m_readAheadEnd = 0;
};

} // namespace zelkodatastreamconverter
