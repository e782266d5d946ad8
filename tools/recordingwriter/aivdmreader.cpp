#include "aivdmreader.h"

#include <QList>

namespace zelkorecording {

namespace {

quint8 xorOf(QByteArray const& text)
{
    quint8 sum = 0;
    for (char const c : text) {
        sum ^= quint8(c);
    }
    return sum;
}

/// Splits "body*hh" and checks hh; false when the star or the two hex digits are missing or
/// the sum does not match.
bool checkedBody(QByteArray const& text, QByteArray& body, bool& sumMatches)
{
    int const star = text.lastIndexOf('*');
    if (star < 0 || text.size() - star < 3) {
        return false;
    }
    bool ok = false;
    unsigned const sum = text.mid(star + 1, 2).toUInt(&ok, 16);
    if (!ok) {
        return false;
    }
    body = text.left(star);
    sumMatches = xorOf(body) == sum;
    return true;
}

/// The time of a tag block's "c:" field: UNIX seconds, or milliseconds for values that are
/// too large to be seconds.
std::optional<quint64> tagTime(QByteArray const& tags)
{
    for (QByteArray const& field : tags.split(',')) {
        if (field.startsWith("c:")) {
            bool ok = false;
            quint64 const value = field.mid(2).toULongLong(&ok);
            if (ok) {
                return value > 100000000000ull ? value * 1000u : value * 1000000u;
            }
        }
    }
    return std::nullopt;
}

bool isSmallNumber(QByteArray const& field, int low, int high, int& value)
{
    bool ok = false;
    value = field.toInt(&ok);
    return ok && value >= low && value <= high;
}

} // namespace

bool AivdmReader::disarm(QByteArray const& payload, int fill, QByteArray& bits, unsigned& bitCount)
{
    if (fill < 0 || fill > 5 || unsigned(payload.size()) * 6u < unsigned(fill)) {
        return false;
    }
    bits = QByteArray((payload.size() * 6 + 7) / 8, '\0');
    unsigned position = 0;
    for (char const c : payload) {
        // '0'-'W' and '`'-'w' are the armour; the eight characters between are not.
        if (quint8(c) < 48 || quint8(c) > 119 || (quint8(c) > 87 && quint8(c) < 96)) {
            return false;
        }
        int value = quint8(c) - 48;
        if (value > 40) {
            value -= 8;
        }
        for (int bit = 5; bit >= 0; --bit, ++position) {
            if ((value >> bit) & 1) {
                bits[int(position / 8)] = char(quint8(bits[int(position / 8)]) | (0x80u >> (position % 8)));
            }
        }
    }
    bitCount = position - unsigned(fill);
    return true;
}

std::optional<AivdmMessage> AivdmReader::readLine(QByteArray const& rawLine)
{
    ++m_counts.lines;
    QByteArray line = rawLine.trimmed();
    std::optional<quint64> time;
    if (line.startsWith('\\')) {
        int const end = line.indexOf('\\', 1);
        QByteArray tags;
        bool sumMatches = false;
        if (end < 0 || !checkedBody(line.mid(1, end - 1), tags, sumMatches)) {
            ++m_counts.broken;
            return std::nullopt;
        }
        if (!sumMatches) {
            ++m_counts.checksumErrors;
            return std::nullopt;
        }
        time = tagTime(tags);
        line = line.mid(end + 1);
    }
    if (!line.startsWith('!') || line.size() < 6 ||
        (line.mid(3, 3) != "VDM" && line.mid(3, 3) != "VDO")) {
        ++m_counts.otherLines;
        return std::nullopt;
    }
    QByteArray body;
    bool sumMatches = false;
    if (!checkedBody(line.mid(1), body, sumMatches)) {
        ++m_counts.broken;
        return std::nullopt;
    }
    if (!sumMatches) {
        ++m_counts.checksumErrors;
        return std::nullopt;
    }
    return take(body, time);
}

std::optional<AivdmMessage> AivdmReader::take(QByteArray const& body, std::optional<quint64> time)
{
    QList<QByteArray> const fields = body.split(',');
    int count = 0;
    int index = 0;
    int fill = 0;
    if (fields.size() != 7 || !isSmallNumber(fields[1], 1, 9, count) ||
        !isSmallNumber(fields[2], 1, count, index) || !isSmallNumber(fields[6], 0, 5, fill) ||
        fields[4].size() > 1) {
        ++m_counts.broken;
        return std::nullopt;
    }
    ++m_counts.sentences;
    char const channel = fields[4].isEmpty() ? char(0) : fields[4][0];
    QByteArray const key = fields[3] + ',' + fields[4];
    QByteArray payload = fields[5];
    if (count > 1) {
        auto pending = m_pending.find(key);
        if (index == 1) {
            if (pending != m_pending.end()) {
                ++m_counts.incomplete; // a new message begins before the old one ended
            }
            m_pending.insert(key, Pending{count, 2, payload, time});
            return std::nullopt;
        }
        if (pending == m_pending.end() || pending->count != count || pending->next != index) {
            ++m_counts.broken; // a part out of order, or of a message whose start was lost
            if (pending != m_pending.end()) {
                ++m_counts.incomplete;
                m_pending.erase(pending);
            }
            return std::nullopt;
        }
        pending->payload += payload;
        if (++pending->next <= count) {
            return std::nullopt;
        }
        payload = pending->payload;
        time = pending->time;
        m_pending.erase(pending);
    }
    AivdmMessage message;
    if (!disarm(payload, fill, message.bits, message.bitCount) || message.bitCount < 6) {
        ++m_counts.broken;
        return std::nullopt;
    }
    message.channel = channel;
    message.time = time;
    ++m_counts.messages;
    return message;
}

void AivdmReader::finish()
{
    m_counts.incomplete += m_pending.size();
    m_pending.clear();
}

} // namespace zelkorecording
