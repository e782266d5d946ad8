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
    /// Bytes consumed from the file so far (0 after close): read-ahead bytes not yet handed
    /// to the frame logic do not count.
    long long getPosition() const { return m_filePosition - readAheadAvailable(); }
    QFile const& getFile() const { return m_file; }

protected:
    bool readBuffer() override;

private:
    qint64 readFromFile(char* destination, qint64 count);

    QFile m_file;
    // Asked before every frame: a flag of our own spares a call into the file device.
    bool m_open = false;
    // Where the file stands: bytes read from it so far, read-ahead included. The file is read
    // in large blocks into the frame reader's read-ahead, so that small frames cost neither a
    // system call nor a pass through a small device buffer each.
    qint64 m_filePosition = 0;
};

} // namespace zelkodatastreamconverter
