#pragma once

#include "frameformat.h"

#include <QByteArray>
#include <QString>

namespace zelkodatastreamconverter {

/// Cuts a recording's byte stream into frames.
///
/// The frame format (magic word, header, length limit, frame types) is in frameformat.h.
///
/// The byte order is decided afresh from every magic word, so a recording may change it
/// between frames; completed frames are handed out converted to host order, word by word.
/// Garbage between frames is skipped by resynchronising on the next possible magic word,
/// with at most one "unknown magic word" message per run of garbage; zero padding is
/// skipped silently.
///
/// Usage: call readFrame() until it returns true, then takeFrameData() or removeFrameData()
/// before the next readFrame(). A false return means more bytes are needed, bytes were
/// dropped, or the reader failed: isWorking() tells them apart.
///
/// Where the bytes come from is up to a subclass (readBuffer(), close()); see FileReader.
class FrameReader
{
public:
    explicit FrameReader(QString const& name);
    FrameReader(FrameReader const&) = default;
    FrameReader& operator=(FrameReader const&) = default;
    virtual ~FrameReader();

    /// One step of frame assembly; true when a complete frame is in the buffer.
    virtual bool readFrame();
    /// True while no fatal error has occurred.
    virtual bool isWorking();
    virtual void close() = 0;

    /// Hands out the complete frame (header included, in host order) and its type as
    /// lower-case hex text without prefix ("40" for type 64); removes it from the buffer.
    /// frameData keeps its capacity, so a caller that reuses it does not allocate per frame.
    void takeFrameData(QByteArray& frameType, QByteArray& frameData);
    /// Drops the current frame (or, while resynchronising, the first expected-size bytes).
    void removeFrameData();
    /// Forgets all buffered bytes; used before a seek.
    void clearFrameData();
    /// Reads count raw bytes outside the frame logic; fewer at end of data. Any frame being
    /// assembled is lost.
    void readDirect(QByteArray& out, int count);

    void setConvertByteOrder(bool convert) { m_convertByteOrder = convert; }
    /// Whether the frames currently read are byte-swapped to host order.
    bool convertByteOrder() const { return m_convertByteOrder; }
    bool fatalError() const { return m_fatalError; }
    void setError(bool error) { m_fatalError = error; }
    QString const& getName() const { return m_name; }

protected:
    /// Makes the buffer hold expected-size bytes by reading behind the filled bytes; true when
    /// filled size has reached expected size. On end of data or a read error, leaves the
    /// reader in its final state and returns false.
    virtual bool readBuffer() = 0;

    void setExpected(int count);
    int indexOfMagicWord() const;

    int expectedSize() const { return m_expectedSize; }
    int filledSize() const { return m_filledSize; }
    /// Where readBuffer() writes the next bytes: behind the filled ones.
    char* fillPosition() { return m_buffer.data() + m_filledSize; }
    void addFilled(int count) { m_filledSize += count; }

private:
    bool readHeader();
    quint32 headerWord(int index) const;
    void convertFilledWords();
    void trace(QString const& message, int line) const;

    QString m_name;
    int m_expectedSize = 0;
    int m_filledSize = 0;
    quint32 m_nativeMagic = FRAME_MAGIC;
    quint32 m_swappedMagic = SwappedFrameMagic;
    bool m_convertByteOrder = false;
    bool m_magicErrorReported = false;
    bool m_fatalError = false;
    QByteArray m_buffer;
};

} // namespace zelkodatastreamconverter
