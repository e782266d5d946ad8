#pragma once

#include <QTextStream>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>
#include <memory>

namespace zelkodatastreamconverter {

/// A produced text document, written through a text stream with the platform's default
/// codec. File type "Text", name pattern "%1%2.txt" (start time and uniqueness suffix).
///
/// Writers write through getTextStream() and count what they wrote with addFileSize(); when
/// the limit is passed the file is completed and the next getTextStream() starts a new one.
/// A file closed with closeFile(true) starts over empty when it is written again.
class TextFile : public BinaryFile
{
public:
    TextFile(QString const& fileCode, int maximumSize, FileInfoCallback* callback);
    /// Copies the settings; the copy has neither file nor stream.
    TextFile(TextFile const& other);
    TextFile& operator=(TextFile const& other);
    ~TextFile() override;

    /// The stream on the current file, creating the file if needed. Null when no file could
    /// be created (createFile has traced why).
    QTextStream* getTextStream();

    /// Flushes and drops the stream, then closes like the base.
    void closeFile(bool keepForReopen) override;

protected:
    /// Opens write-only, truncating, in text mode.
    bool openFile(QFile* file) override;
    /// Sends a REPORTKIT::Binary record of type "Text" (no informational trace).
    void sendFileInfo(bool complete) override;

private:
    std::unique_ptr<QTextStream> m_textStream;
};

} // namespace zelkodatastreamconverter
