#pragma once

#include "moduletrace.h"

#include <QString>
#include <nerikresultdataxml/nerikresultdataexception.h>
#include <reportkit/rgexception.h>
#include <utility>

namespace zelkodatastreamconverter {

/// What a guarded step threw.
struct GuardedFailure
{
    enum Kind
    {
        Report,   ///< REPORTKIT::RGException
        Document, ///< NerikResultDataXml::NerikResultDataException
        Unknown   ///< anything else
    };
    Kind kind;
    /// The exception's message; empty for Unknown.
    QString text;
};

/// The trace lines of a guarded operation, one per kind of failure.
struct GuardLines
{
    int report;
    int document;
    int unknown;

    static constexpr GuardLines same(int line) { return {line, line, line}; }
};

/// Runs step and keeps every exception inside: no exception leaves the library's interface.
/// What the report and result-document libraries throw, and anything else, is handed to
/// onFailure(GuardedFailure const&). A step that has a result to give sets it itself, so
/// that a failure leaves the caller's default in place.
template <typename Step, typename OnFailure>
void guardedCall(Step&& step, OnFailure&& onFailure)
{
    try {
        std::forward<Step>(step)();
    } catch (REPORTKIT::RGException const& error) {
        onFailure(GuardedFailure{GuardedFailure::Report, error.GetMessage()});
    } catch (NerikResultDataXml::NerikResultDataException const& error) {
        onFailure(GuardedFailure{GuardedFailure::Document, error.GetMessage()});
    } catch (...) {
        onFailure(GuardedFailure{GuardedFailure::Unknown, QString()});
    }
}

/// The usual form: a failure is traced as a warning "<operation>: <text>", or
/// "<operation>: Unknown exception", at the line given for its kind.
template <typename Step>
void guardedCall(ModuleTrace const& trace, QString const& operation, GuardLines lines, Step&& step)
{
    guardedCall(std::forward<Step>(step), [&](GuardedFailure const& failure) {
        switch (failure.kind) {
        case GuardedFailure::Report:
            trace.warning(QStringLiteral("%1: %2").arg(operation, failure.text), lines.report);
            break;
        case GuardedFailure::Document:
            trace.warning(QStringLiteral("%1: %2").arg(operation, failure.text), lines.document);
            break;
        case GuardedFailure::Unknown:
            trace.warning(QStringLiteral("%1: Unknown exception").arg(operation), lines.unknown);
            break;
        }
    });
}

} // namespace zelkodatastreamconverter
