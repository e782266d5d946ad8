#include "aisposition.h"

namespace zelkodatastreamconverter {

namespace {

struct AISUnitMarks
{
    QString degree = QString(QChar(0xB0));
    QString minute = QStringLiteral("'");
    QString second = QStringLiteral("''");
};

AISUnitMarks const& aisUnitMarks()
{
    static AISUnitMarks const marks;
    return marks;
}

} // namespace

QStringList scanAISPosition(QString const& text)
{
    QStringList tokens;
    QString token;
    bool inToken = false;
    bool inNumber = false;
    auto finish = [&] {
        tokens << token;
        token.clear();
    };
    for (QChar const ch : text) {
        if (ch.isDigit()) {
            if (inToken && !inNumber) {
                finish();
            }
            token += ch;
            inToken = inNumber = true;
        } else if (ch.isSpace()) {
            if (inToken) {
                finish();
            }
            inToken = inNumber = false;
        } else if (ch == QLatin1Char('.')) {
            if (inNumber) {
                token += ch;
            }
        } else {
            if (inToken && inNumber) {
                finish();
            }
            token += ch;
            inToken = true;
            inNumber = false;
        }
    }
    if (inToken) {
        finish();
    }
    return tokens;
}

bool getAISPosition(QStringList const& tokens, QString const& hemisphere, double& value,
                    double maximum)
{
    int const i = tokens.indexOf(hemisphere);
    if (i < 0 || i + 6 >= tokens.size()) {
        return false;
    }
    AISUnitMarks const& marks = aisUnitMarks();
    if (tokens[i + 2] != marks.degree || tokens[i + 4] != marks.minute ||
        tokens[i + 6] != marks.second) {
        return false;
    }
    bool ok = false;
    value = tokens[i + 1].toDouble(&ok);
    if (!ok) {
        return false;
    }
    value += tokens[i + 3].toDouble(&ok) / 60.0;
    if (!ok) {
        return false;
    }
    value += tokens[i + 5].toDouble(&ok) / 3600.0;
    if (!ok) {
        return false;
    }
    return value >= 0.0 && value <= maximum;
}

} // namespace zelkodatastreamconverter
