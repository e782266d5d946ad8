#pragma once

#include <QChar>
#include <QVector>
#include <alphabetkit/morsecharacter.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextmodel.h>
#include <memory>

class CodecHandler;
class SimpleMorseHandler;

namespace zelkodatastreamconverter {

class FileInfoCallback;
struct SymbolRecord;

/// The result model of symbol recordings (frame type 304, layout in symbolframe.h): raw
/// symbols of a demodulator and the key-down/key-up elements of Morse signals, per channel.
///
/// Every channel is a stream of its own and gets
/// - a symbol file (SymbolFile, code "Symbols" or "Morse") with the runs exactly as received;
/// - a text file (TextFile, same code, "<code>_<channel>_<yyyyMMdd_hhmmss>.txt") of the text
///   read from them, created with its first character;
/// - a data block in the result document: the text as content, the symbols or elements as raw
///   content (rawContentType below), a time stamp at every frame, and for Morse the confidence
///   of every character.
///
/// Raw symbols are translated through the job's alphabet (decoder and alphabet as for decoded
/// text, shift state kept per channel) when the alphabet is not "None" and its codes are as
/// wide as the symbols (5-bit symbols through "International", 7-bit through "CCIR 476", ...);
/// otherwise they are kept as symbols only: no content, no text file. Raw content
/// "Symbols/<width>": one code unit a symbol up to 16 bits, two (upper half first) above.
///
/// Morse elements go through one SimpleMorseHandler per channel with the alphabet "Morse" of
/// the alphabets directory (dots and dashes when it has no "morse.csv"). A frame that begins
/// later than the previous one of the channel ended adds the silence between them as a key-up
/// element. Raw content "MorseElements": each element word as two code units, upper half
/// first. The characters that a frame completes are noted, after the content they add, by a
/// UserData item of type "Confidence" over that content: Text the confidence of each
/// character (0 to 100, separated by blanks), Text2 its elements ("/" for a word gap). In the
/// text file a character below the confidence threshold is preceded by the marker ("~E"), and
/// a character that begins more than MessagePauseSeconds after the one before starts a new
/// line.
///
/// A new stream (the first frame of a channel, or a change of kind or symbol width) starts a
/// new data block and adds an Info record: "Channel", "Kind" ("Symbols" or "Morse"), for raw
/// symbols "SymbolWidth" and "SymbolRate" (baud), for Morse "ToneFrequency" (Hz) and "Level"
/// (dBFS), and "SymbolFile" (the file's name).
///
/// Channels outside the job's channel selection are skipped.
///
/// Messages (module "symboldatamodel", warning bit):
///   "processData: damaged symbol frame (%1)"   with the reason (SymbolRecord::read); the
///                                              frame is skipped, the stream goes on
class SymbolDataModel : public DecodedTextModel
{
public:
    static constexpr int DefaultConfidenceThreshold = 50;
    static constexpr QChar DefaultLowConfidenceMarker = QChar(u'~');
    static constexpr int MessagePauseSeconds = 5;
    static QString const SymbolsKind;       ///< "Symbols"
    static QString const MorseKind;         ///< "Morse"
    static QString const ConfidenceType;    ///< "Confidence"
    static QString const MorseElementsType; ///< "MorseElements"

    struct Counts
    {
        int frames = 0;
        qint64 symbols = 0;
        qint64 elements = 0;
        qint64 characters = 0;
        int damagedFrames = 0;
        int breaks = 0; ///< Morse frames that began after a break, taken as silence
    };

    SymbolDataModel();
    ~SymbolDataModel() override;

    /// Ends every stream (finish()), forgets the channels, then clears the document.
    void clear() override;
    bool setAlphabetsDirectory(QString const& directory) override;

    /// The directory of the symbol and text files and the callback that hears of them.
    /// Without it only the result document is filled.
    void setOutput(QString const& directory, FileInfoCallback* callback);
    /// The split limit of symbol and text files (default 1 GiB).
    void setMaxFileSize(int bytes) { m_maxFileSize = bytes; }
    /// Characters with a confidence below threshold are marked in the text file.
    void setLowConfidenceMarking(int threshold, QChar marker);

    /// One frame (header and payload in host order). False for a frame of another type; a
    /// damaged frame is skipped (traced, counted) and answers true.
    bool processData(QByteArray const& frame);
    /// Ends every stream: the characters still pending, the files completed.
    void finish();

    Counts const& counts() const { return m_counts; }

    /// How a Morse channel's text file goes on: the marking, whether a character has been
    /// written and where the last one ended (stream microseconds), and a word gap not yet
    /// written.
    struct TextLayout
    {
        int threshold = DefaultConfidenceThreshold;
        QChar marker = DefaultLowConfidenceMarker;
        bool written = false;
        qint64 lastEnd = 0;
        bool pendingSpace = false;
    };
    /// The text-file form of characters that continue `layout`: the marker before each
    /// character below the threshold, a line break before one that begins more than
    /// MessagePauseSeconds after the last, word gaps as one blank and never at a line's end.
    static QString textFileForm(QVector<MorseCharacter> const& characters, TextLayout& layout);

private:
    struct Stream;

    Stream& streamFor(SymbolRecord const& record, QDateTime const& time, bool& started);
    void startStream(Stream& stream, SymbolRecord const& record, QDateTime const& time);
    void endStream(Stream& stream);
    void addRawSymbols(Stream& stream, DataBlock& block, SymbolRecord const& record);
    void addMorseElements(Stream& stream, DataBlock& block, SymbolRecord const& record);
    void addCharacters(Stream& stream, DataBlock& block, QVector<MorseCharacter> const& characters);
    void writeText(Stream& stream, QString const& text);
    void noteStream(Stream const& stream, SymbolRecord const& record, QDateTime const& time);
    DataBlock* blockOf(Stream const& stream) const;
    /// A handler with the Morse alphabet read, copied for each stream so that the alphabets
    /// directory is read once, not once a channel.
    SimpleMorseHandler const& morseTemplate();

    std::shared_ptr<CodecHandler> m_codec;
    std::unique_ptr<SimpleMorseHandler> m_morseTemplate;
    std::map<int, std::unique_ptr<Stream>> m_streams;
    QString m_directory;
    FileInfoCallback* m_callback = nullptr;
    int m_maxFileSize = 1 << 30;
    int m_threshold = DefaultConfidenceThreshold;
    QChar m_marker = DefaultLowConfidenceMarker;
    Counts m_counts;
};

} // namespace zelkodatastreamconverter
