#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <alphabetkit/alphabet.h>

namespace AlphabetKit {

/// The alphabets of one directory: every readable "*.alphabet" file in it (not in
/// subdirectories), read in file-name order. A file that cannot be read is skipped; its error
/// is kept in errors() and traced as a warning. A second file with an alphabet name already
/// read is skipped the same way. "None" is always present: the directory's own file when it
/// has one, else the built-in pass-through.
class AlphabetCatalog
{
public:
    static QString const& fileSuffix(); ///< ".alphabet"
    static QString const&
    allDecoders(); ///< "All": the decoder under which every alphabet is listed

    AlphabetCatalog();

    /// Replaces the contents by the alphabets of the directory. An empty path means the working
    /// directory. Returns false when the directory does not exist (only "None" is left).
    bool load(QString const& directory);

    QString const& directory() const { return m_directory; }
    QStringList const& errors() const { return m_errors; }

    /// Names of the alphabets that the decoder offers, "None" first, then by name ignoring
    /// case. The decoder "All" lists every alphabet.
    QStringList names(QString const& decoder) const;
    QStringList allNames() const { return names(allDecoders()); }

    /// The alphabet of that exact name, or null.
    AlphabetPtr find(QString const& name) const;
    /// Like find(), but only when the decoder offers it.
    AlphabetPtr find(QString const& name, QString const& decoder) const;

private:
    void warn(QString const& message, unsigned short line);

    QString m_directory;
    QVector<AlphabetPtr> m_alphabets; // "None" first, then sorted
    QStringList m_errors;
};

} // namespace AlphabetKit
