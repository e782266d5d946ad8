#include "codechandler.h"

using AlphabetKit::AlphabetPtr;

CodecHandler::CodecHandler() = default;
CodecHandler::~CodecHandler() = default;

void CodecHandler::SetAlphabetsDir(QString const& directory)
{
    QString const current = Alphabet();
    m_catalog.load(directory);
    AlphabetPtr alphabet = m_catalog.find(current);
    m_translator = AlphabetKit::CodeTranslator(
        alphabet ? alphabet : m_catalog.find(AlphabetKit::Alphabet::noneName()));
}

bool CodecHandler::SetAlphabet(QString const& alphabet)
{
    AlphabetPtr found = m_catalog.find(alphabet, m_decoder);
    if (!found) {
        return false;
    }
    m_translator = AlphabetKit::CodeTranslator(found);
    return true;
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

QByteArray CodecHandler::SaveInternalState() const
{
    return Alphabet().toUtf8() + '\n' + QByteArray::number(m_translator.currentTable());
}

void CodecHandler::RestoreInternalState(QByteArray const& state)
{
    int const separator = state.lastIndexOf('\n');
    bool ok = false;
    int const table = separator < 0 ? -1 : state.mid(separator + 1).toInt(&ok);
    if (ok && QString::fromUtf8(state.left(separator)) == Alphabet()) {
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

QString CodecHandler::Backtranslate(QString const& text)
{
    return m_translator.backtranslate(text);
}
