#include <QProcess>
#include <diagnostics/errorhandler.h>
#include <gtest/gtest.h>

namespace {

struct MaskText
{
    char const* name;
    char const* text;
    bool ok;
    unsigned mask;
};

using ParseMask = testing::TestWithParam<MaskText>;

TEST_P(ParseMask, ReadsDecimalAndHex)
{
    unsigned mask = 7;
    EXPECT_EQ(ErrorHandler::parseMask(QString::fromLatin1(GetParam().text), mask), GetParam().ok);
    EXPECT_EQ(mask, GetParam().mask);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParseMask,
    testing::Values(MaskText{"decimal", "96", true, 96}, MaskText{"hex", "0x60", true, 0x60},
                    MaskText{"upper_hex_prefix", "0X20", true, 0x20},
                    MaskText{"blanks", " 64 ", true, 64}, MaskText{"zero", "0", true, 0},
                    MaskText{"words", "all", false, 7}, MaskText{"empty", "", false, 7},
                    MaskText{"hex_without_digits", "0x", false, 7},
                    MaskText{"negative", "-1", false, 7}),
    [](testing::TestParamInfo<MaskText> const& info) { return info.param.name; });

TEST(ErrorHandler, SinkReceivesMessageSourceAndLine)
{
    QString got;
    ErrorHandler::Instance().setTraceSink(
        [&got](QString const& message, QString const& source, unsigned short line) {
            got = QStringLiteral("%1|%2|%3").arg(message, source).arg(line);
        });
    _Q_Trace(QStringLiteral("hello"), QStringLiteral("a/b"), 42);
    ErrorHandler::Instance().setTraceSink({});
    EXPECT_EQ(got, QStringLiteral("hello|a/b|42"));
}

// The environment and the default sink are process-wide, so they are checked in a child
// process: the test binary re-runs itself with a filter and an environment.
TEST(ErrorHandler, ChildWritesDefaultLineToStderr)
{
    if (qEnvironmentVariableIsSet("ZELKO_CHILD_TRACE")) {
        ASSERT_EQ(ErrorHandler::Instance().traceLevelMask(), 0x40u);
        _Q_Trace(QStringLiteral("child message"), QStringLiteral("mod/file"), 7);
        return;
    }
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("ZELKO_CHILD_TRACE"), QStringLiteral("1"));
    env.insert(QStringLiteral("ZELKO_TRACE_MASK"), QStringLiteral("0x40"));
    child.setProcessEnvironment(env);
    child.start(QString::fromLocal8Bit(testing::internal::GetArgvs().front().c_str()),
                {QStringLiteral("--gtest_filter=ErrorHandler.ChildWritesDefaultLineToStderr")});
    ASSERT_TRUE(child.waitForFinished(30000));
    EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardOutput().toStdString();
    EXPECT_TRUE(child.readAllStandardError().contains("mod/file:7: child message\n"));
}

} // namespace
