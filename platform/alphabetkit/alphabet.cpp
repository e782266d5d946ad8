#include "alphabet.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTextCodec>

namespace AlphabetKit {

namespace {

// Larger than any table of 16-bit codes can sensibly be written; keeps a wrong path (a
// recording, a disk image) from being read into memory whole.
constexpr qint64 MaxFileSize = 4 * 1024 * 1024;
// Every table holds an entry for each of the 2^width codes (1.25 MiB at 16 bits), so the
// number of tables bounds an alphabet's memory; teleprinter codes use two or three.
constexpr int MaxTables = 16;

bool parseCode(QString const& text, unsigned& value)
{
    static QRegularExpression const form(
        QStringLiteral("^(?:0[xX][0-9A-Fa-f]{1,8}|0[bB][01]{1,32}|[0-9]{1,9})$"));
    if (!form.match(text).hasMatch()) {
        return false;
    }
    bool ok = false;
    if (text.size() > 2 && (text[1] == QLatin1Char('x') || text[1] == QLatin1Char('X'))) {
        value = text.mid(2).toUInt(&ok, 16);
    } else if (text.size() > 2 && (text[1] == QLatin1Char('b') || text[1] == QLatin1Char('B'))) {
        value = text.mid(2).toUInt(&ok, 2);
    } else {
        value = text.toUInt(&ok, 10);
    }
    return ok;
}

/// One value token: a control name, U+XXXX, or a single character written as itself.
bool parseToken(QString const& token, QString& text)
{
    static QHash<QString, QString> const names{{QStringLiteral("SP"), QStringLiteral(" ")},
                                               {QStringLiteral("LF"), QStringLiteral("\n")},
                                               {QStringLiteral("CR"), QStringLiteral("\r")},
                                               {QStringLiteral("TAB"), QStringLiteral("\t")}};
    auto const named = names.constFind(token);
    if (named != names.constEnd()) {
        text += *named;
        return true;
    }
    static QRegularExpression const codePoint(QStringLiteral("^U\\+([0-9A-Fa-f]{4,6})$"));
    QRegularExpressionMatch const match = codePoint.match(token);
    if (match.hasMatch()) {
        uint const value = match.captured(1).toUInt(nullptr, 16);
        if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
            return false;
        }
        text += QString::fromUcs4(&value, 1);
        return true;
    }
    if (token.toUcs4().size() == 1) {
        text += token;
        return true;
    }
    return false;
}

bool parseText(QStringList const& tokens, QString& text, QString& badToken)
{
    for (QString const& token : tokens) {
        if (!parseToken(token, text)) {
            badToken = token;
            return false;
        }
    }
    return true;
}

QStringList splitTokens(QString const& value)
{
    static QRegularExpression const blanks(QStringLiteral("\\s+"));
    return value.split(blanks, Qt::SkipEmptyParts);
}

QString stripComment(QString const& line)
{
    for (int i = 0; i < line.size(); ++i) {
        if (line[i] == QLatin1Char('#') && (i == 0 || line[i - 1].isSpace())) {
            return line.left(i);
        }
    }
    return line;
}

} // namespace

class AlphabetParser
{
public:
    AlphabetParser(QString const& origin, QString& error) : m_origin(origin), m_error(error) {}

    AlphabetPtr run(QByteArray const& bytes)
    {
        QTextCodec::ConverterState state;
        QString text =
            QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
        if (state.invalidChars > 0) {
            fail(0, QStringLiteral("not UTF-8 text"));
            return nullptr;
        }
        if (text.startsWith(QChar(0xFEFF))) {
            text.remove(0, 1);
        }
        QStringList const lines = text.split(QLatin1Char('\n'));
        for (int i = 0; i < lines.size(); ++i) {
            if (!line(i + 1, stripComment(lines[i]).trimmed())) {
                return nullptr;
            }
        }
        return finish() ? m_alphabet : nullptr;
    }

private:
    bool fail(int line, QString const& problem)
    {
        m_error = line > 0
                      ? QStringLiteral("%1:%2: %3").arg(m_origin, QString::number(line), problem)
                      : QStringLiteral("%1: %2").arg(m_origin, problem);
        return false;
    }

    bool line(int number, QString const& text)
    {
        if (text.isEmpty()) {
            return true;
        }
        if (m_ended) {
            return fail(number, QStringLiteral("text after the end line"));
        }
        if (text == QLatin1String("end")) {
            m_ended = true;
            return true;
        }
        if (text.startsWith(QLatin1Char('['))) {
            return section(number, text);
        }
        int const equals = text.indexOf(QLatin1Char('='));
        QString const key = text.left(equals).trimmed();
        if (equals < 0 || key.isEmpty()) {
            return fail(number, QStringLiteral("expected \"key = value\": \"%1\"").arg(text));
        }
        QString const value = text.mid(equals + 1).trimmed();
        return m_table < 0 ? header(number, key, value) : code(number, key, value);
    }

    bool section(int number, QString const& text)
    {
        if (!text.endsWith(QLatin1Char(']'))) {
            return fail(number, QStringLiteral("expected \"[table name]\": \"%1\"").arg(text));
        }
        QString const name = text.mid(1, text.size() - 2).trimmed();
        if (name.isEmpty()) {
            return fail(number, QStringLiteral("table without a name"));
        }
        if (m_alphabet->m_width == 0) {
            return fail(number, QStringLiteral("width must come before the first table"));
        }
        for (Alphabet::Table const& table : qAsConst(m_alphabet->m_tables)) {
            if (table.name == name) {
                return fail(number, QStringLiteral("table \"%1\" defined twice").arg(name));
            }
        }
        if (m_alphabet->m_tables.size() >= MaxTables) {
            return fail(number, QStringLiteral("more than %1 tables").arg(MaxTables));
        }
        int const size = 1 << m_alphabet->m_width;
        m_alphabet->m_tables.append({name, QVector<CodeEntry>(size)});
        m_codeLines.append(QVector<int>(size, 0));
        m_table = m_alphabet->m_tables.size() - 1;
        return true;
    }

    bool header(int number, QString const& key, QString const& value)
    {
        if (m_keyLines.contains(key)) {
            return fail(number, QStringLiteral("duplicate key \"%1\"").arg(key));
        }
        m_keyLines.insert(key, number);
        Alphabet& a = *m_alphabet;
        if (key == QLatin1String("name")) {
            if (value.isEmpty()) {
                return fail(number, QStringLiteral("empty name"));
            }
            a.m_name = value;
        } else if (key == QLatin1String("decoders")) {
            for (QString const& decoder : value.split(QLatin1Char(','))) {
                if (!decoder.trimmed().isEmpty()) {
                    a.m_decoders.append(decoder.trimmed());
                }
            }
        } else if (key == QLatin1String("width")) {
            static QRegularExpression const digits(QStringLiteral("^[0-9]{1,2}$"));
            unsigned const width = digits.match(value).hasMatch() ? value.toUInt() : 0;
            if (width < 1 || width > unsigned(Alphabet::MaxWidth)) {
                return fail(
                    number,
                    QStringLiteral("width must be a number from 1 to 16: \"%1\"").arg(value));
            }
            a.m_width = int(width);
        } else if (key == QLatin1String("direction")) {
            if (value != QLatin1String("ltr") && value != QLatin1String("rtl")) {
                return fail(number,
                            QStringLiteral("direction must be ltr or rtl: \"%1\"").arg(value));
            }
            a.m_rightToLeft = value == QLatin1String("rtl");
        } else if (key == QLatin1String("initial")) {
            m_initial = value;
        } else if (key == QLatin1String("unknown")) {
            QString text;
            QString bad;
            if (value != QLatin1String("none") && !parseText(splitTokens(value), text, bad)) {
                return fail(number, QStringLiteral("unknown value \"%1\"").arg(bad));
            }
            a.m_unknown = text;
        } else {
            return fail(number, QStringLiteral("unknown key \"%1\"").arg(key));
        }
        return true;
    }

    bool code(int number, QString const& key, QString const& value)
    {
        QStringList const bounds = key.split(QLatin1Char('-'));
        unsigned first = 0;
        unsigned last = 0;
        if (bounds.size() > 2 || !parseCode(bounds.front().trimmed(), first) ||
            !parseCode(bounds.back().trimmed(), last)) {
            return fail(number, QStringLiteral("not a code: \"%1\"").arg(key));
        }
        if (last < first) {
            return fail(number, QStringLiteral("range runs backwards: \"%1\"").arg(key));
        }
        unsigned const limit = 1u << m_alphabet->m_width;
        if (last >= limit) {
            return fail(number, QStringLiteral("code %1 does not fit in %2 bits")
                                    .arg(bounds.back().trimmed())
                                    .arg(m_alphabet->m_width));
        }
        QStringList tokens = splitTokens(value);
        CodeEntry entry;
        // "shift" is never a character token, so wherever it stands it starts the switch.
        int const shiftAt = tokens.indexOf(QStringLiteral("shift"));
        if (shiftAt >= 0) {
            if (tokens.size() != shiftAt + 2) {
                return fail(number, QStringLiteral("\"shift\" needs exactly one table name"));
            }
            m_shifts.append({m_table, first, last, tokens.takeLast(), number});
            tokens.removeLast();
        }
        if (shiftAt == 0) {
            entry.kind = CodeEntry::Shift;
        } else if (tokens.isEmpty()) {
            return fail(number, QStringLiteral("no value for code \"%1\"").arg(key));
        } else if (shiftAt < 0 && tokens.size() == 1 && tokens.front() == QLatin1String("none")) {
            entry.kind = CodeEntry::Nothing;
        } else if (shiftAt < 0 && tokens.size() == 1 && tokens.front() == QLatin1String("same")) {
            entry.kind = CodeEntry::Same;
        } else {
            QString bad;
            entry.kind = CodeEntry::Text;
            if (!parseText(tokens, entry.text, bad)) {
                return fail(number, QStringLiteral("unknown value \"%1\"").arg(bad));
            }
        }
        Alphabet::Table& table = m_alphabet->m_tables[m_table];
        QVector<int>& lines = m_codeLines[m_table];
        for (unsigned code = first; code <= last; ++code) {
            if (lines[int(code)] != 0) {
                return fail(number,
                            QStringLiteral("duplicate code %1 in table \"%2\" (first on line %3)")
                                .arg(code)
                                .arg(table.name)
                                .arg(lines[int(code)]));
            }
            lines[int(code)] = number;
            table.entries[int(code)] = entry;
        }
        return true;
    }

    int findTable(QString const& name) const
    {
        for (int i = 0; i < m_alphabet->m_tables.size(); ++i) {
            if (m_alphabet->m_tables[i].name == name) {
                return i;
            }
        }
        return -1;
    }

    bool finish()
    {
        if (!m_ended) {
            return fail(0, QStringLiteral("file ends before its \"end\" line (truncated?)"));
        }
        if (m_alphabet->m_name.isEmpty()) {
            return fail(0, QStringLiteral("missing name"));
        }
        if (m_alphabet->m_width == 0) {
            return fail(0, QStringLiteral("missing width"));
        }
        if (m_alphabet->m_tables.isEmpty()) {
            return fail(0, QStringLiteral("no table"));
        }
        for (PendingShift const& shift : qAsConst(m_shifts)) {
            int const target = findTable(shift.target);
            if (target < 0) {
                return fail(shift.line,
                            QStringLiteral("shift to unknown table \"%1\"").arg(shift.target));
            }
            QVector<CodeEntry>& entries = m_alphabet->m_tables[shift.table].entries;
            for (unsigned code = shift.first; code <= shift.last; ++code) {
                entries[int(code)].shift = target;
            }
        }
        if (!m_initial.isNull()) {
            m_alphabet->m_initialTable = findTable(m_initial);
            if (m_alphabet->m_initialTable < 0) {
                return fail(m_keyLines.value(QStringLiteral("initial")),
                            QStringLiteral("initial table \"%1\" is not defined").arg(m_initial));
            }
        }
        return true;
    }

    struct PendingShift
    {
        int table;
        unsigned first;
        unsigned last;
        QString target;
        int line;
    };

    QString const m_origin;
    QString& m_error;
    std::shared_ptr<Alphabet> m_alphabet = std::make_shared<Alphabet>();
    QHash<QString, int> m_keyLines;
    QVector<QVector<int>> m_codeLines;
    QVector<PendingShift> m_shifts;
    QString m_initial;
    int m_table = -1;
    bool m_ended = false;
};

int Alphabet::longestOutput() const
{
    int longest = qMax(1, m_unknown.size());
    for (Table const& table : m_tables) {
        for (CodeEntry const& entry : table.entries) {
            longest = qMax(longest, entry.text.size());
        }
    }
    return longest;
}

CodeEntry const& Alphabet::entry(int table, unsigned code) const
{
    static CodeEntry const unassigned;
    QVector<CodeEntry> const& entries = m_tables[table].entries;
    return code < unsigned(entries.size()) ? entries[int(code)] : unassigned;
}

bool Alphabet::offeredBy(QString const& decoder) const
{
    for (QString const& listed : m_decoders) {
        if (listed == QLatin1String("*") || listed.compare(decoder, Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

AlphabetPtr Alphabet::parse(QByteArray const& bytes, QString const& origin, QString& error)
{
    error.clear();
    return AlphabetParser(origin, error).run(bytes);
}

AlphabetPtr Alphabet::load(QString const& path, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: cannot read: %2").arg(path, file.errorString());
        return nullptr;
    }
    if (file.size() > MaxFileSize) {
        error = QStringLiteral("%1: larger than %2 bytes, not an alphabet file")
                    .arg(path)
                    .arg(MaxFileSize);
        return nullptr;
    }
    return parse(file.readAll(), path, error);
}

QString const& Alphabet::noneName()
{
    static QString const name = QStringLiteral("None");
    return name;
}

AlphabetPtr Alphabet::none()
{
    static AlphabetPtr const builtIn = [] {
        QString error;
        AlphabetPtr alphabet = parse(QByteArrayLiteral("name = None\ndecoders = *\nwidth = 16\n"
                                                       "[plain]\n0x0000-0xFFFF = same\nend\n"),
                                     QStringLiteral("built-in None"), error);
        Q_ASSERT(alphabet);
        return alphabet;
    }();
    return builtIn;
}

} // namespace AlphabetKit
