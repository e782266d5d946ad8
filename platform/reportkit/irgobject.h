#pragma once

#include <QString>

namespace REPORTKIT {

/// Base of every report record: an object with an XML text form.
///
/// Validation is on by default. While it is on, setters reject values that a report could
/// not hold (they throw RGException) and SetXmlString() refuses unknown elements and
/// attributes. Producers that build records from trusted data switch it off.
class IRGObject
{
public:
    IRGObject() = default;
    IRGObject(IRGObject const&) = default;
    IRGObject& operator=(IRGObject const&) = default;
    virtual ~IRGObject();

    /// The object as a complete XML document.
    virtual QString GetXmlString() const = 0;

    /// Replaces the object's content by the XML document in xml. options is reserved and
    /// must be 0. Returns false, leaving the object unchanged, when the text is not a valid
    /// form of this object; LastXmlError() then says why, with line and column.
    virtual bool SetXmlString(QString const& xml, int options) = 0;

    virtual void SetValidate(bool validate) { m_validate = validate; }
    bool GetValidate() const { return m_validate; }

    /// Why the last SetXmlString() failed ("line 3, column 7: ..."); empty after success.
    QString const& LastXmlError() const { return m_lastXmlError; }

protected:
    void setLastXmlError(QString const& error) { m_lastXmlError = error; }

private:
    bool m_validate = true;
    QString m_lastXmlError;
};

} // namespace REPORTKIT
