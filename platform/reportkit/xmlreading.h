#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

class QXmlStreamReader;

namespace REPORTKIT {

/// Small checks shared by the XML readers of the host libraries. Every failure leaves a
/// message in the error text that names the line and column ("line 3, column 14: ...").
///
/// Strict readers (validation on) reject unknown attributes and elements; lenient ones skip
/// them, so that newer documents stay readable.
class XmlReading
{
public:
    XmlReading(QXmlStreamReader& reader, bool strict, QString& error);

    /// Fails on an attribute of the current element that is not in allowed (strict only).
    bool attributes(QStringList const& allowed);
    bool requiredText(QString const& name, QString& value);
    bool optionalTime(QString const& name, QDateTime& value);
    bool requiredTime(QString const& name, QDateTime& value);
    bool optionalDouble(QString const& name, double& value);
    bool requiredDouble(QString const& name, double& value);
    bool optionalInt(QString const& name, int& value, bool& present);
    bool requiredInt(QString const& name, int& value);
    bool optionalBool(QString const& name, bool& value);

    /// Moves to the next child element of the current one; false at its end or on error.
    bool nextChild();
    /// Called on a child that the reader does not know: an error when strict, else skipped.
    bool unexpectedElement();
    /// Skips the rest of the current element; child elements are errors when strict.
    bool skipContent();
    /// Reads the text content of the current element up to its end tag.
    bool readText(QString& text);

    /// False, with the parser's error in the error text, when the XML is broken.
    bool ok();
    bool fail(QString const& message);

    static bool readRoot(QXmlStreamReader& reader, QString const& rootName, QString& error);
    static bool readEnd(QXmlStreamReader& reader, QString& error);
    static QString position(QXmlStreamReader const& reader);

private:
    QXmlStreamReader& m_reader;
    bool m_strict;
    QString& m_error;
};

} // namespace REPORTKIT
