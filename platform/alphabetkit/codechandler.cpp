#include "codechandler.h"

using AlphabetKit::AlphabetPtr;

CodecHandler::CodecHandler()
{
    useTranslator(m_translator.alphabet());
}

CodecHandler::~CodecHandler() = default;

void CodecHandler::SetAlphabetsDir(QString const& directory)
{
    QString const current = Alphabet();
    m_catalog.load(directory);
    AlphabetPtr alphabet = m_catalog.find(current);
    useTranslator(alphabet ? alphabet : m_catalog.find(AlphabetKit::Alphabet::noneName()));
}

bool CodecHandler::SetAlphabet(QString const& alphabet)
{
    AlphabetPtr found = m_catalog.find(alphabet, m_decoder);
    if (!found) {
        return false;
    }
    useTranslator(found);
    return true;
}

void CodecHandler::useTranslator(AlphabetPtr const& alphabet)
{
    m_translator = AlphabetKit::CodeTranslator(alphabet);
    m_statePrefix = m_translator.alphabet()->name().toUtf8() + '\n';
}

void CodecHandler::SetDecoder(QString const& decoder)
{
    m_decoder = decoder;
}

QString CodecHandler::Alphabet() const
{
    return m_translator.alphabet()->name();
}

QStringList CodecHandler::AvailableAlphabets() const
{
    return m_catalog.names(m_decoder);
}

bool CodecHandler::TextDirectionRTL() const
{
    return m_translator.alphabet()->rightToLeft();
}

// Saved and restored around every frame of every channel of a recording: the name part is
// made once per alphabet, and nothing is allocated to read a state back.
QByteArray CodecHandler::SaveInternalState() const
{
    return m_statePrefix + QByteArray::number(m_translator.currentTable());
}

void CodecHandler::RestoreInternalState(QByteArray const& state)
{
    int const separator = state.lastIndexOf('\n');
    bool ok = separator + 1 == m_statePrefix.size() && state.startsWith(m_statePrefix);
    int const table = ok ? QByteArray::fromRawData(state.constData() + separator + 1,
                                                   state.size() - separator - 1)
                               .toInt(&ok)
                         : -1;
    if (ok) {
        m_translator.setCurrentTable(table);
    } else {
        m_translator.reset();
    }
}

void CodecHandler::ResetInternalState()
{
    m_translator.reset();
}

QString CodecHandler::Translate(QString const& raw)
{
    return m_translator.translate(raw);
}

void CodecHandler::Translate(QChar const* raw, int size, QString& text)
{
    m_translator.translate(raw, size, text);
}

QString CodecHandler::Backtranslate(QString const& text)
{
    return m_translator.backtranslate(text);
}
