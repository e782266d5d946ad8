#include "simplemorsehandler.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTextStream>
#include <diagnostics/errorhandler.h>

namespace {

QString const& noneName()
{
    static QString const name = QStringLiteral("None");
    return name;
}

} // namespace

QString const& SimpleMorseHandler::morseName()
{
    static QString const name = QStringLiteral("Morse");
    return name;
}

QString const& SimpleMorseHandler::tableFile()
{
    static QString const name = QStringLiteral("morse.csv");
    return name;
}

SimpleMorseHandler::SimpleMorseHandler() : m_alphabet(noneName()) {}

SimpleMorseHandler::~SimpleMorseHandler() = default;

void SimpleMorseHandler::SetAlphabetsDir(QString const& directory)
{
    m_toText.clear();
    m_toMorse.clear();
    m_longestText = 0;
    m_errors.clear();
    m_pending.clear();

    QString const path =
        QDir(directory.isEmpty() ? QStringLiteral(".") : directory).filePath(tableFile());
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        m_errors.append(QStringLiteral("%1: cannot read: %2").arg(path, file.errorString()));
    } else {
        static QRegularExpression const elements(QStringLiteral("^[.-]{1,16}$"));
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        int number = 0;
        while (!stream.atEnd()) {
            QString const line = stream.readLine().trimmed();
            ++number;
            if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) {
                continue;
            }
            int const separator = line.lastIndexOf(QLatin1Char(';'));
            QString const text = line.left(separator);
            QString const code = line.mid(separator + 1);
            if (separator <= 0 || !elements.match(code).hasMatch() || m_toText.contains(code)) {
                m_errors.append(QStringLiteral("%1:%2: expected \"character;elements\" with "
                                               "elements not listed before: \"%3\"")
                                    .arg(path)
                                    .arg(number)
                                    .arg(line));
                continue;
            }
            m_toText.insert(code, text);
            m_toMorse.insert(text, code);
            m_longestText = qMax(m_longestText, text.size());
        }
    }
    if (ErrorHandler::Instance().traceLevelMask() & ErrorHandler::WarningBit) {
        for (QString const& error : qAsConst(m_errors)) {
            _Q_Trace(error, QStringLiteral("platform/alphabetkit/simplemorsehandler"), __LINE__);
        }
    }
    if (m_toText.isEmpty()) {
        m_alphabet = noneName();
    }
}

bool SimpleMorseHandler::SetAlphabet(QString const& alphabet)
{
    if (!AvailableAlphabets().contains(alphabet)) {
        return false;
    }
    m_alphabet = alphabet;
    m_pending.clear();
    return true;
}

void SimpleMorseHandler::SetDecoder(QString const& decoder)
{
    m_decoder = decoder;
}

QString SimpleMorseHandler::Alphabet() const
{
    return m_alphabet;
}

QStringList SimpleMorseHandler::AvailableAlphabets() const
{
    QStringList names{noneName()};
    if (!m_toText.isEmpty()) {
        names.append(morseName());
    }
    return names;
}

bool SimpleMorseHandler::TextDirectionRTL() const
{
    return false;
}

void SimpleMorseHandler::ResetInternalState()
{
    m_pending.clear();
    m_timing.reset();
}

void SimpleMorseHandler::flush(QString& out)
{
    if (!m_pending.isEmpty()) {
        out += m_toText.value(m_pending, QString(QChar(0xFFFD)));
        m_pending.clear();
    }
}

QString SimpleMorseHandler::Translate(QString const& raw)
{
    if (m_alphabet != morseName()) {
        return raw;
    }
    QString out;
    for (QChar const unit : raw) {
        if (unit == QLatin1Char('.') || unit == QLatin1Char('-')) {
            m_pending += unit;
        } else if (unit == QLatin1Char(' ')) {
            flush(out);
        } else if (unit == QLatin1Char('/')) {
            flush(out);
            out += QLatin1Char(' ');
        } else {
            flush(out);
            out += unit;
        }
    }
    return out;
}

QString SimpleMorseHandler::Backtranslate(QString const& text)
{
    if (m_alphabet != morseName()) {
        return text;
    }
    QString const upper = text.toUpper();
    QString out;
    int i = 0;
    while (i < upper.size()) {
        if (upper[i] == QLatin1Char(' ')) {
            out += QStringLiteral("/ ");
            ++i;
            continue;
        }
        int length = 1;
        QString code;
        for (int n = qMin(m_longestText, upper.size() - i); n >= 1; --n) {
            code = m_toMorse.value(upper.mid(i, n));
            if (!code.isEmpty()) {
                length = n;
                break;
            }
        }
        if (!code.isEmpty()) {
            out += code + QLatin1Char(' ');
        }
        i += length;
    }
    return out;
}

QVector<MorseCharacter> SimpleMorseHandler::printed(QVector<MorseCharacter> characters) const
{
    bool const morse = m_alphabet == morseName();
    for (MorseCharacter& character : characters) {
        if (character.text.isEmpty()) {
            character.text = morse ? m_toText.value(character.elements, QString(QChar(0xFFFD)))
                                   : character.elements;
        }
    }
    return characters;
}

QVector<MorseCharacter> SimpleMorseHandler::AddElements(QVector<MorseElement> const& elements)
{
    return printed(m_timing.add(elements));
}

QVector<MorseCharacter> SimpleMorseHandler::FlushElements()
{
    return printed(m_timing.finish());
}
