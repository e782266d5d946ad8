#pragma once

#include <QString>

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// Base of the result-document objects that render themselves as a whole XML document
/// (NerikResultData and Transmission).
class INerikResultData
{
public:
    INerikResultData() = default;
    INerikResultData(INerikResultData const&) = default;
    INerikResultData& operator=(INerikResultData const&) = default;
    virtual ~INerikResultData();

    /// The object as a complete XML document (with XML declaration), every text escaped so
    /// that it reads back unchanged. Throws NerikResultDataException when it cannot be
    /// rendered.
    virtual QString GetXmlString() const;

    /// Writes the object as one element at the writer's position.
    virtual void WriteXml(Utf8XmlWriter& writer) const = 0;
};

} // namespace NerikResultDataXml
