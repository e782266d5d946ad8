#include "textfile.h"

#include "moduletrace.h"

#include <reportkit/binary.h>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("textfile"));
    return instance;
}

} // namespace

TextFile::TextFile(QString const& fileCode, int maximumSize, FileInfoCallback* callback)
    : BinaryFile(QStringLiteral("Text"), fileCode, maximumSize, callback)
{
}

TextFile::TextFile(TextFile const& other) : BinaryFile(other) {}

TextFile& TextFile::operator=(TextFile const& other)
{
    if (this != &other) {
        m_textStream.reset();
        BinaryFile::operator=(other);
    }
    return *this;
}

TextFile::~TextFile()
{
    // The stream flushes into the file, so it goes before the base deletes the file.
    m_textStream.reset();
}

QTextStream* TextFile::getTextStream()
{
    if (!m_textStream) {
        QFile* const file = getFile();
        if (file == nullptr) {
            return nullptr;
        }
        m_textStream = std::make_unique<QTextStream>(file);
    }
    return m_textStream.get();
}

void TextFile::closeFile(bool keepForReopen)
{
    m_textStream.reset();
    BinaryFile::closeFile(keepForReopen);
}

bool TextFile::openFile(QFile* file)
{
    return file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
}

void TextFile::sendFileInfo(bool complete)
{
    REPORTKIT::Binary record;
    record.SetType(getFileType());
    deliverRecord(record, complete, trace());
}

} // namespace zelkodatastreamconverter
