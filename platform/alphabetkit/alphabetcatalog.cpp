#include "alphabetcatalog.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <diagnostics/errorhandler.h>

namespace AlphabetKit {

QString const& AlphabetCatalog::fileSuffix()
{
    static QString const suffix = QStringLiteral(".alphabet");
    return suffix;
}

QString const& AlphabetCatalog::allDecoders()
{
    static QString const all = QStringLiteral("All");
    return all;
}

AlphabetCatalog::AlphabetCatalog()
{
    m_alphabets.append(Alphabet::none());
}

void AlphabetCatalog::warn(QString const& message, unsigned short line)
{
    m_errors.append(message);
    if (ErrorHandler::Instance().traceLevelMask() & ErrorHandler::WarningBit) {
        _Q_Trace(message, QStringLiteral("platform/alphabetkit/alphabetcatalog"), line);
    }
}

bool AlphabetCatalog::load(QString const& directory)
{
    m_directory = directory;
    m_errors.clear();
    m_alphabets.clear();

    QDir const dir(directory.isEmpty() ? QStringLiteral(".") : directory);
    bool const exists = dir.exists();
    QVector<AlphabetPtr> read;
    QStringList origins;
    if (!exists) {
        warn(QStringLiteral("alphabets directory \"%1\" does not exist").arg(directory), __LINE__);
    } else {
        QStringList const files =
            dir.entryList({QLatin1Char('*') + fileSuffix()}, QDir::Files, QDir::Name);
        for (QString const& file : files) {
            QString const path = dir.filePath(file);
            QString error;
            AlphabetPtr alphabet = Alphabet::load(path, error);
            if (!alphabet) {
                warn(QStringLiteral("alphabet file skipped: %1").arg(error), __LINE__);
                continue;
            }
            int const earlier = int(std::find_if(read.cbegin(), read.cend(),
                                                 [&](AlphabetPtr const& other) {
                                                     return other->name() == alphabet->name();
                                                 }) -
                                    read.cbegin());
            if (earlier < read.size()) {
                warn(QStringLiteral("alphabet file skipped: %1: alphabet \"%2\" is already "
                                    "defined in %3")
                         .arg(path, alphabet->name(), origins[earlier]),
                     __LINE__);
                continue;
            }
            read.append(alphabet);
            origins.append(path);
        }
    }

    std::stable_sort(read.begin(), read.end(), [](AlphabetPtr const& a, AlphabetPtr const& b) {
        bool const aNone = a->name() == Alphabet::noneName();
        bool const bNone = b->name() == Alphabet::noneName();
        if (aNone != bNone) {
            return aNone;
        }
        return a->name().compare(b->name(), Qt::CaseInsensitive) < 0;
    });
    if (read.isEmpty() || read.front()->name() != Alphabet::noneName()) {
        read.prepend(Alphabet::none());
    }
    m_alphabets = read;
    return exists;
}

QStringList AlphabetCatalog::names(QString const& decoder) const
{
    QStringList names;
    for (AlphabetPtr const& alphabet : m_alphabets) {
        if (decoder == allDecoders() || alphabet->offeredBy(decoder)) {
            names.append(alphabet->name());
        }
    }
    return names;
}

AlphabetPtr AlphabetCatalog::find(QString const& name) const
{
    for (AlphabetPtr const& alphabet : m_alphabets) {
        if (alphabet->name() == name) {
            return alphabet;
        }
    }
    return nullptr;
}

AlphabetPtr AlphabetCatalog::find(QString const& name, QString const& decoder) const
{
    AlphabetPtr alphabet = find(name);
    if (alphabet && (decoder == allDecoders() || alphabet->offeredBy(decoder))) {
        return alphabet;
    }
    return nullptr;
}

} // namespace AlphabetKit
