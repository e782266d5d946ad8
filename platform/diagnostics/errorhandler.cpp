#include "errorhandler.h"

#include <QByteArray>
#include <QMutex>
#include <QMutexLocker>
#include <atomic>
#include <cstdio>

struct ErrorHandler::Private
{
    std::atomic<unsigned> mask{DefaultTraceLevelMask};
    mutable QMutex sinkMutex;
    TraceSink sink;
};

namespace {

void writeToStderr(QString const& message, QString const& sourceFile, unsigned short line)
{
    QByteArray const text =
        QStringLiteral("%1:%2: %3\n").arg(sourceFile).arg(line).arg(message).toLocal8Bit();
    std::fwrite(text.constData(), 1, size_t(text.size()), stderr);
    std::fflush(stderr);
}

} // namespace

ErrorHandler::ErrorHandler() : d(std::make_unique<Private>())
{
    unsigned mask = DefaultTraceLevelMask;
    QByteArray const fromEnvironment = qgetenv("ZELKO_TRACE_MASK");
    if (!fromEnvironment.isEmpty() && !parseMask(QString::fromLatin1(fromEnvironment), mask)) {
        writeToStderr(QStringLiteral("ignoring ZELKO_TRACE_MASK=%1: not a number")
                          .arg(QString::fromLatin1(fromEnvironment)),
                      QStringLiteral("platform/diagnostics/errorhandler"), __LINE__);
    }
    d->mask = mask;
}

ErrorHandler::~ErrorHandler() = default;

ErrorHandler& ErrorHandler::Instance()
{
    static ErrorHandler instance;
    return instance;
}

unsigned ErrorHandler::traceLevelMask() const
{
    return d->mask.load(std::memory_order_relaxed);
}

void ErrorHandler::setTraceLevelMask(unsigned mask)
{
    d->mask.store(mask, std::memory_order_relaxed);
}

void ErrorHandler::setTraceSink(TraceSink sink)
{
    QMutexLocker const lock(&d->sinkMutex);
    d->sink = std::move(sink);
}

void ErrorHandler::trace(QString const& message, QString const& sourceFile,
                         unsigned short line) const
{
    TraceSink sink;
    {
        // Copy under the lock and call outside it, so that a sink may trace or swap sinks.
        QMutexLocker const lock(&d->sinkMutex);
        sink = d->sink;
    }
    if (sink) {
        sink(message, sourceFile, line);
    } else {
        writeToStderr(message, sourceFile, line);
    }
}

bool ErrorHandler::parseMask(QString const& text, unsigned& mask)
{
    QString const trimmed = text.trimmed();
    bool ok = false;
    unsigned value = 0;
    if (trimmed.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        value = trimmed.mid(2).toUInt(&ok, 16);
    } else {
        value = trimmed.toUInt(&ok, 10);
    }
    if (ok) {
        mask = value;
    }
    return ok;
}

void _Q_Trace(QString const& message, QString const& sourceFile, unsigned short line)
{
    ErrorHandler::Instance().trace(message, sourceFile, line);
}
