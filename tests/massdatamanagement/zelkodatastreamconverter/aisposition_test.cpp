// AIS position texts: tokens and coordinates, at the edges that station reports do not reach.

#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/aisposition.h>

using zelkodatastreamconverter::getAISPosition;
using zelkodatastreamconverter::scanAISPosition;

namespace {

QString const Degree(QChar(0xB0));

TEST(AISPosition, TokensAreRunsOfDigitsAndOfOtherCharacters)
{
    struct Row
    {
        char const* name;
        QString text;
        QStringList tokens;
    } const rows[] = {
        {"empty", QString(), {}},
        {"number first", QStringLiteral("53") + Degree, {QStringLiteral("53"), Degree}},
        {"number then letter after a blank",
         QStringLiteral("53 N"),
         {QStringLiteral("53"), QStringLiteral("N")}},
        {"trailing blank", QStringLiteral("N "), {QStringLiteral("N")}},
        {"leading full stop dropped",
         QStringLiteral(".5 N"),
         {QStringLiteral("5"), QStringLiteral("N")}},
        {"decimal point kept in a number",
         QStringLiteral("10.5''"),
         {QStringLiteral("10.5"), QStringLiteral("''")}},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(scanAISPosition(row.text), row.tokens) << row.name;
    }
}

TEST(AISPosition, CoordinateNeedsEveryNumberAndMark)
{
    auto tokens = [](char const* degrees, QString const& degreeMark, char const* minutes,
                     char const* seconds, int count = 7) {
        QStringList const all = {QStringLiteral("N"), QLatin1String(degrees),
                                 degreeMark,          QLatin1String(minutes),
                                 QStringLiteral("'"), QLatin1String(seconds),
                                 QStringLiteral("''")};
        return all.mid(0, count);
    };
    struct Row
    {
        char const* name;
        QStringList tokens;
        bool read;
        double value;
    } const rows[] = {
        {"complete", tokens("1", Degree, "30", "36"), true, 1.51},
        {"seconds mark missing", tokens("1", Degree, "30", "36", 6), false, 0.0},
        {"degrees no number", tokens("x", Degree, "30", "36"), false, 0.0},
        {"seconds no number", tokens("1", Degree, "30", "y"), false, 0.0},
        {"wrong degree mark", tokens("1", QStringLiteral("d"), "30", "36"), false, 0.0},
    };
    for (Row const& row : rows) {
        double value = -1.0;
        EXPECT_EQ(getAISPosition(row.tokens, QStringLiteral("N"), value, 90.0), row.read)
            << row.name;
        if (row.read) {
            EXPECT_NEAR(value, row.value, 1e-9) << row.name;
        }
    }
}

} // namespace
