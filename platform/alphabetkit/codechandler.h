#pragma once

#include <alphabetkit/alphabetcatalog.h>
#include <alphabetkit/codetranslator.h>
#include <alphabetkit/ialphabethandler.h>

/// The table-driven alphabet handler: every alphabet is an alphabet file (see
/// AlphabetKit::Alphabet for the format) in the alphabets directory.
///
/// A new handler has no decoder, the alphabet "None" and no directory read; a converter
/// typically does
///
///     auto handler = std::make_shared<CodecHandler>();
///     handler->SetAlphabetsDir(directory);   // e.g. the configured "MorseAlphabets"
///     handler->SetDecoder(QStringLiteral("BAUDOT"));
///     handler->SetAlphabet(QStringLiteral("International"));
///     QString text = handler->Translate(raw);  // shift state carries over to the next call
class CodecHandler : public IAlphabetHandler
{
public:
    CodecHandler();
    ~CodecHandler() override;

    void SetAlphabetsDir(QString const& directory) override;
    bool SetAlphabet(QString const& alphabet) override;
    void SetDecoder(QString const& decoder) override;
    QString Alphabet() const override;
    QStringList AvailableAlphabets() const override;
    bool TextDirectionRTL() const override;
    void ResetInternalState() override;
    QString Translate(QString const& raw) override;
    void Translate(QChar const* raw, int size, QString& text) override;
    QString Backtranslate(QString const& text) override;
    /// The current shift table, with the alphabet's name so that a state of another alphabet
    /// is not taken for this one's.
    QByteArray SaveInternalState() const override;
    void RestoreInternalState(QByteArray const& state) override;

    QString AlphabetsDir() const { return m_catalog.directory(); }
    QString Decoder() const { return m_decoder; }
    /// Bits of a code of the current alphabet (16 for "None").
    int AlphabetWidth() const { return m_translator.alphabet()->width(); }
    /// The problems of the last SetAlphabetsDir, one message per skipped file.
    QStringList LoadErrors() const { return m_catalog.errors(); }

private:
    void useTranslator(AlphabetKit::AlphabetPtr const& alphabet);

    AlphabetKit::AlphabetCatalog m_catalog;
    AlphabetKit::CodeTranslator m_translator;
    // The alphabet's name in UTF-8 and the separator: how every saved state begins.
    QByteArray m_statePrefix;
    QString m_decoder;
};
