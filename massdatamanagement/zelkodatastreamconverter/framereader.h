#pragma once

#include "frameformat.h"

#include <QByteArray>
#include <QString>
#include <cstring>

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
///
/// Callers that do not keep a frame can look at it where it lies instead of copying it out:
/// after readFrame() returned true, frameView() shows the same bytes and type that
/// takeFrameData() would hand out; removeFrameData() then drops the frame.
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
    /// A complete frame in the reader's buffer, without copying it: valid until the next call
    /// that changes the reader (readFrame(), removeFrameData(), ...).
    struct FrameView
    {
        char const* data = nullptr;
        int size = 0;
        quint32 type = 0; ///< header word 3; takeFrameData() hands it out as hex text
    };
    /// The frame takeFrameData() would hand out, left in the buffer; call removeFrameData()
    /// when done with it.
    FrameView frameView() const
    {
        FrameView view;
        view.data = m_buffer.constData();
        view.size = m_filledSize < m_expectedSize ? m_filledSize : m_expectedSize;
        // Without a complete frame there is no type word (as in takeFrameData()).
        if (m_buffer.size() >= FrameHeaderSize) {
            std::memcpy(&view.type, view.data + FrameTypeOffset, sizeof view.type);
        }
        return view;
    }
    /// Drops the current frame (or, while resynchronising, the first expected-size bytes).
    /// Inline: small frames are read at tens of millions a second.
    void removeFrameData()
    {
        if (m_filledSize > m_expectedSize) {
            keepBytesBehindFrame();
        } else {
            m_expectedSize = 0;
            m_filledSize = 0;
        }
    }
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

    /// Read-ahead for sources that read in large blocks (FileReader). The source fills a block
    /// that the reader owns and serves its readBuffer() requests from it (takeReadAhead());
    /// readFrame() takes a frame that lies whole and regular in the block in one step instead
    /// of asking for its header and body separately. The result is the same either way.
    ///
    /// readAheadBlock() forgets any bytes left and returns `size` bytes to fill;
    /// setReadAheadFilled() tells how many were filled.
    char* readAheadBlock(int size);
    void setReadAheadFilled(int count);
    int readAheadAvailable() const { return m_readAheadEnd - m_readAheadBegin; }
    /// Copies up to count bytes out of the block; returns how many.
    int takeReadAhead(char* destination, int count);
    void clearReadAhead() { m_readAheadBegin = m_readAheadEnd = 0; }

private:
    void keepBytesBehindFrame();
    bool takeWholeFrame();
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
    QByteArray m_readAhead;
    int m_readAheadBegin = 0;
    int m_readAheadEnd = 0;
};

} // namespace zelkodatastreamconverter
