#pragma once

#include "ownedlist.h"
#include "timestamp.h"
#include "userdata.h"

#include <QList>
#include <QString>
#include <QVector>

class QXmlStreamReader;

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// The text received on one channel of a transmission: the raw content (the code units the
/// receiver delivered, kept exactly), the readable content translated from it, the time
/// stamps that say where the text of each receive time begins, and user annotations.
///
/// Positions are counted from the start of the channel's text: a block made with
/// DataBlock(channel, contentStart, rawStart) continues an earlier block of the channel,
/// and the positions recorded by BeginFrame() start at contentStart and rawStart.
///
/// Frames: SetTimeStamp(t) sets the time of the next frame; BeginFrame() appends a time
/// stamp (t, content position, raw position) and remembers where the frame's data begin
/// (GetRawFramePos(), GetContentFramePos(): indexes into GetRawContent() / GetContent());
/// EndFrame() removes that time stamp again when the frame added neither raw data nor
/// content, so empty frames leave no trace.
///
/// The block owns its user data items. Copies are deep.
///
/// XML form:
///   <DataBlock id="7" channel="3" contentStart="0" rawStart="0" contentCode="ITA2"
///              rtl="false" rawContentType="DecodedText">
///     <TimeStamp time="..." position="0" rawPosition="0"/>...
///     <Content>text, with <c u="001B"/> for characters XML cannot carry</Content>
///     <RawContent>base64 of the UTF-16LE code units</RawContent>
///     <UserData .../>...
///   </DataBlock>
class DataBlock
{
public:
    /// Raw-content type of text decoded by the receiver (16-bit character codes).
    static QString const sRawData_DecodedText; // "DecodedText"

    DataBlock() = default;
    explicit DataBlock(int channel, int contentStart = 0, int rawStart = 0);
    DataBlock(DataBlock const& other) = default;
    DataBlock& operator=(DataBlock const& other) = default;
    DataBlock(DataBlock&& other) noexcept = default;
    DataBlock& operator=(DataBlock&& other) noexcept = default;
    ~DataBlock();

    int GetID() const { return m_id; }
    void SetID(int id) { m_id = id; }
    int GetChannel() const { return m_channel; }
    void SetChannel(int channel) { m_channel = channel; }
    int GetContentStart() const { return m_contentStart; }
    int GetRawStart() const { return m_rawStart; }

    /// Time of the next frame (see BeginFrame()).
    void SetTimeStamp(QDateTime const& time) { m_frameTime = time; }
    /// The time stamps, in the order they were made; the list may be edited.
    QVector<TimeStamp>& GetTimeStamp() { return m_timeStamps; }
    QVector<TimeStamp> const& GetTimeStamp() const { return m_timeStamps; }

    void BeginFrame();
    void EndFrame();
    /// Index into GetRawContent() where the current (or last) frame's raw data begin.
    int GetRawFramePos() const { return m_rawFramePos; }
    /// Index into GetContent() where the current (or last) frame's content begins.
    int GetContentFramePos() const { return m_contentFramePos; }

    QString const& GetContent() const { return m_content; }
    void SetContent(QString const& content) { m_content = content; }
    void AppendData(QString const& text) { m_content.append(text); }
    void ClearContent() { m_content.clear(); }

    QString const& GetRawContent() const { return m_rawContent; }
    void SetRawContent(QString const& raw) { m_rawContent = raw; }
    void AppendRawData(QString const& raw) { m_rawContent.append(raw); }
    void AppendRawData(QChar code) { m_rawContent.append(code); }
    void AppendRawData(QChar const* codes, int size) { m_rawContent.append(codes, size); }

    /// The alphabet settings the content was translated with.
    QString const& GetContentCode() const { return m_contentCode; }
    void SetContentCode(QString const& code) { m_contentCode = code; }
    bool GetContentDirectionRTL() const { return m_rtl; }
    void SetContentDirectionRTL(bool rtl) { m_rtl = rtl; }
    /// What the raw content holds, e.g. sRawData_DecodedText; empty when not given.
    QString const& GetRawContentType() const { return m_rawContentType; }
    void SetRawContentType(QString const& type) { m_rawContentType = type; }

    /// The user data items, owned by the block; the list may be edited (remove an item from
    /// the list and delete it, or append a new one, which the block then owns).
    QList<UserData*>& GetUserData() { return m_userData.items(); }
    QList<UserData*> const& GetUserData() const { return m_userData.items(); }
    /// Appends an item; the block takes ownership.
    void AddUserData(UserData* userData);
    /// Deletes every user data item.
    void DeleteUserData();

    void WriteXml(Utf8XmlWriter& writer) const;
    bool ReadXml(QXmlStreamReader& reader, QString& error);

    /// Equal content, positions, time stamps and user data (compared by value). The pending
    /// frame state (SetTimeStamp, frame positions) is not compared.
    bool operator==(DataBlock const& other) const;
    bool operator!=(DataBlock const& other) const { return !(*this == other); }

private:
    int m_id = 0;
    int m_channel = 0;
    int m_contentStart = 0;
    int m_rawStart = 0;
    QDateTime m_frameTime;
    int m_rawFramePos = 0;
    int m_contentFramePos = 0;
    bool m_inFrame = false;
    QVector<TimeStamp> m_timeStamps;
    QString m_content;
    QString m_rawContent;
    QString m_contentCode;
    bool m_rtl = false;
    QString m_rawContentType;
    OwnedList<UserData> m_userData;
};

} // namespace NerikResultDataXml
