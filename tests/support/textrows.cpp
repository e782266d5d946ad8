#include "textrows.h"

#include "golden.h"

#include <QStringList>
#include <cctype>

namespace zelkotest {

namespace {

QString unescaped(QString text)
{
    return text.replace(QLatin1String("\\n"), QLatin1String("\n"))
        .replace(QLatin1String("\\r"), QLatin1String("\r"))
        .replace(QLatin1String("\\t"), QLatin1String("\t"));
}

} // namespace

std::vector<TextRow> readTextRows(QString const& relativePath)
{
    std::vector<TextRow> rows;
    QStringList const lines =
        QString::fromUtf8(readFile(QStringLiteral(ZELKO_GOLDEN_DIR "/") + relativePath))
            .split(QLatin1Char('\n'));
    for (int i = 0; i + 2 < lines.size(); ++i) {
        if (!lines[i].startsWith(QLatin1String("# ")) ||
            !(lines[i + 2] == QLatin1String("=") || lines[i + 2].startsWith(QLatin1String("= ")))) {
            continue;
        }
        std::string name = lines[i].mid(2).trimmed().toStdString();
        for (char& ch : name) {
            ch = std::isalnum(static_cast<unsigned char>(ch)) ? ch : '_';
        }
        rows.push_back({name, unescaped(lines[i + 1]), unescaped(lines[i + 2].mid(2))});
        i += 2;
    }
    return rows;
}

} // namespace zelkotest
