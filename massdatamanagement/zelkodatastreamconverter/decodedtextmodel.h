#pragma once

#include <QByteArray>
#include <QHash>
#include <QStringList>
#include <algorithm>
#include <deque>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <memory>
#include <vector>

class IAlphabetHandler;

namespace zelkodatastreamconverter {

/// The result model of decoded-text recordings (frame type 64): collects the character codes
/// of every channel as raw data in the data blocks of the current transmission and translates
/// them into readable text through an alphabet handler.
///
/// Frame payload (offsets from the frame start, host order):
///   24  64-bit  time stamp, microseconds since 1970-01-01 UTC
///   36  32-bit  number of entries n
///   40 + 8k     entry k: channel (32-bit signed), character code (16-bit, a UTF-16 unit)
///
/// The raw codes are always kept, so a later change of alphabet or decoder can translate
/// them again (translateBlock()). The handler's shift state carries over from one frame to
/// the next, kept per channel: a figures shift on one channel does not turn the letters of
/// another into figures, and a code that spans two frames is translated correctly.
class DecodedTextModel : public NerikResultModel
{
public:
    /// The decoder before the settings name one ("NONE"), and the preferred alphabet.
    static QString const NoDecoder;
    static QString const PreferredAlphabet; // "International"
    static QString const AllDecoders;       // "All": the handler lists every alphabet

    /// The alphabets directory comes from the configuration ("JobManagement",
    /// "MorseAlphabets", default "." = the working directory).
    DecodedTextModel();
    ~DecodedTextModel() override;

    /// Keeps the handler (shared with the converter) and sets it up with the model's
    /// directory, decoder and the alphabet "None".
    void setAlphabetHandler(std::shared_ptr<IAlphabetHandler> handler);
    std::shared_ptr<IAlphabetHandler> const& getAlphabetHandler() const { return m_handler; }

    void clear() override;
    bool setAlphabetsDirectory(QString const& directory) override;
    bool setDecoder(QString const& decoder) override;
    bool setAlphabet(QString const& alphabet, bool& changed) override;
    QString getAlphabet() const override;
    QString getAlphabetsDirectory() const override { return m_alphabetsDirectory; }
    QString getDecoder() const override { return m_decoderName; }
    QStringList getAvailableAlphabets() const;
    /// Every alphabet of the handler, whatever the decoder.
    QStringList getAllAlphabets();

    /// One frame. Without a transmission the frame goes into the model's current one and
    /// only its own characters are translated; with one, that transmission is filled and
    /// its whole raw content translated. False for a frame that is no decoded-text frame.
    bool processData(QByteArray const& frame, Transmission* transmission);

    /// A new block for the channel that continues the current transmission's block of that
    /// channel (same ID, positions behind its content); the caller adds it.
    DataBlock* createDataBlock(int channel, QDateTime const& timeStamp);

    /// Translates the block's raw content again, frame by frame.
    void translateBlock(DataBlock* block);
    void translateContent(DataBlock* block);
    void translateContent(DataBlock* block, int rawFrom);
    void translateCurrentTransmission();

private:
    void translateWithChannelState(DataBlock* block, int rawFrom);
    void forgetChannelStates() { m_channelStates.clear(); }
    DataBlock* blockForChannel(Transmission* transmission, int channel, QDateTime const& time,
                               DataBlock* previous);

    QString m_alphabetsDirectory;
    QString m_decoderName;
    std::shared_ptr<IAlphabetHandler> m_handler;
    // The handler's translation state of each channel between frames.
    QHash<int, QByteArray> m_channelStates;

    // The codes of one frame, gathered per block before they are appended in one piece.
    // Kept between frames so that their buffers are reused; a deque, so that a slot stays
    // where it is while others are added.
    struct FrameCodes
    {
        int channel;
        DataBlock* block;
        std::vector<ushort> codes;
        ushort* next; // where the frame's next code of the channel goes

        void restart() { next = codes.data(); }
        int count() const { return int(next - codes.data()); }
        /// Where the next codes go, with room for `more` of them.
        ushort* room(int more)
        {
            size_t const used = size_t(count());
            if (used + size_t(more) > codes.size()) {
                codes.resize(std::max({size_t(256), used + size_t(more), 2 * codes.size()}));
                next = codes.data() + used;
            }
            return next;
        }
    };
    std::deque<FrameCodes> m_frameCodes;
    // Where a channel's codes are in m_frameCodes, once a frame holds many channels.
    QHash<int, size_t> m_frameCodesIndex;
    // The translation of one block's frame, before it is appended to the block's content.
    QString m_translated;
    size_t gatherCycle(char const* data, int entries, int cycle, Transmission* transmission,
                       QDateTime const& time);
    size_t gatherEach(char const* data, int entries, Transmission* transmission,
                      QDateTime const& time);
    FrameCodes& frameCodesFor(Transmission* transmission, int channel, QDateTime const& time,
                              size_t& used);
};

} // namespace zelkodatastreamconverter
