#pragma once

#include <QString>
#include <functional>
#include <memory>

/// Process-wide diagnostics of the host application.
///
/// Every trace message carries a bit of the trace-level mask; a caller formats its message,
/// asks traceLevelMask() whether the bit is set and only then hands it to _Q_Trace().
/// Bit 0x20 carries warnings and errors, bit 0x40 informational traces.
///
/// The default mask is 0x20. The environment variable ZELKO_TRACE_MASK (decimal, or hex with
/// a 0x prefix) overrides it when the handler is first used. All operations are thread-safe.
class ErrorHandler
{
public:
    using TraceSink =
        std::function<void(QString const& message, QString const& sourceFile, unsigned short line)>;

    static constexpr unsigned DefaultTraceLevelMask = 0x20;
    static constexpr unsigned WarningBit = 0x20;
    static constexpr unsigned InfoBit = 0x40;

    static ErrorHandler& Instance();

    unsigned traceLevelMask() const;
    void setTraceLevelMask(unsigned mask);

    /// Installs where traces go; an empty function restores the default sink, which writes
    /// "<sourceFile>:<line>: <message>" as one line to stderr.
    void setTraceSink(TraceSink sink);

    /// Delivers one message to the installed sink.
    void trace(QString const& message, QString const& sourceFile, unsigned short line) const;

    /// Parses a mask as written in ZELKO_TRACE_MASK or on a command line ("96", "0x60").
    /// Returns false and leaves mask unchanged when the text is not a number.
    static bool parseMask(QString const& text, unsigned& mask);

    ErrorHandler(ErrorHandler const&) = delete;
    ErrorHandler& operator=(ErrorHandler const&) = delete;

private:
    ErrorHandler();
    ~ErrorHandler();

    struct Private;
    std::unique_ptr<Private> d;
};

/// Hands a formatted message to the diagnostics sink. Callers check the mask first.
void _Q_Trace(QString const& message, QString const& sourceFile, unsigned short line);
