#pragma once

#include <QString>

namespace zelkodatastreamconverter {

/// The trace channel of one module of the library. A module keeps one instance, named
/// after its source file ("framereader"), and reports through it:
///
///     static ModuleTrace const trace(QStringLiteral("framereader"));
///     trace.warning(QStringLiteral("readFrame(%1): ...").arg(name), __LINE__);
///
/// The message is formatted by the caller, then the diagnostics mask is asked; only when the
/// message's bit is set does it reach _Q_Trace, with the source path
/// "massdatamanagement/zelkodatastreamconverter/<module>".
class ModuleTrace
{
public:
    static constexpr unsigned WarningBit = 0x20;
    static constexpr unsigned InfoBit = 0x40;

    explicit ModuleTrace(QString const& module);

    void warning(QString const& message, int line) const { report(WarningBit, message, line); }
    void info(QString const& message, int line) const { report(InfoBit, message, line); }
    void report(unsigned bit, QString const& message, int line) const;

    /// Whether messages of this bit would be delivered; lets callers skip costly formatting.
    static bool enabled(unsigned bit);

    QString const& sourceFile() const { return m_sourceFile; }

private:
    QString m_sourceFile;
};

} // namespace zelkodatastreamconverter
