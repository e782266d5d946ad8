#pragma once

#include "irgobject.h"

#include <initializer_list>

class QXmlStreamReader;
class QXmlStreamWriter;

namespace REPORTKIT {
class XmlReading;
}

namespace REPORTKIT {

/// Base of the report objects that are one XML element each: the settings objects (tuner,
/// FFM, antenna, audio, and the job settings built on them) and the produced-file records.
/// Each can stand alone as a document or be nested inside another element.
///
/// GetXmlString() writes the element as a whole document; SetXmlString(xml, 0) reads one,
/// refusing a wrong root element, broken XML, wrong value types and (while validation is on)
/// unknown attributes and elements. A refused text leaves the object unchanged, and
/// LastXmlError() names line and column.
class XmlElementObject : public IRGObject
{
public:
    ~XmlElementObject() override;

    /// The element name of the object ("FFM_Settings", "Tuner_Settings", ...).
    virtual QString ElementName() const = 0;

    /// Writes the object as one element at the writer's position.
    virtual void WriteXml(QXmlStreamWriter& writer) const = 0;
    /// Reads the element whose start tag the reader has just read, up to its end tag. On
    /// failure returns false with a "line X, column Y: ..." text in error and leaves the
    /// object unchanged.
    virtual bool ReadXml(QXmlStreamReader& reader, QString& error) = 0;

    QString GetXmlString() const override;
    bool SetXmlString(QString const& xml, int options) override;

protected:
    XmlElementObject() = default;

    /// Reads the child elements of the current element into parts, which must come in the
    /// order given and each at most once; other elements are refused or skipped as `in`
    /// says. False, with the reason in error, on the first fault.
    static bool ReadChildrenInOrder(XmlReading& in, QXmlStreamReader& reader,
                                    std::initializer_list<XmlElementObject*> parts, QString& error);
    XmlElementObject(XmlElementObject const&) = default;
    XmlElementObject& operator=(XmlElementObject const&) = default;
};

} // namespace REPORTKIT
